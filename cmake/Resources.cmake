# Embeds every file of data/resources/ into folvant_platform as a byte array, reachable by
# its file name without extension through folvant::platform::Resource().
file(GLOB _resource_files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/data/resources/*)
set(_resource_cpp ${PROJECT_BINARY_DIR}/generated/Resources.cpp)
add_custom_command(
  OUTPUT ${_resource_cpp}
  COMMAND ${CMAKE_COMMAND} -DOUTPUT=${_resource_cpp}
          "-DINPUTS=${_resource_files}"
          -P ${PROJECT_SOURCE_DIR}/cmake/EmbedResources.cmake
  DEPENDS ${_resource_files} ${PROJECT_SOURCE_DIR}/cmake/EmbedResources.cmake
  COMMENT "Embedding resources"
  VERBATIM)
target_sources(folvant_platform PRIVATE ${_resource_cpp})
