# Script mode: writes OUTPUT, a C++ file holding INPUTS as byte arrays, found through
# NAMESPACE::FUNCTION (default folvant::platform::Resource, declared in HEADER) by the file name
# without extension, or with it when KEEP_EXTENSION is set.
if(NOT DEFINED NAMESPACE)
  set(NAMESPACE folvant::platform)
  set(FUNCTION Resource)
  set(HEADER folvant/platform/Resources.h)
  set(ORIGIN data/resources)
endif()
set(_body "")
set(_table "")
set(_index 0)
foreach(_file IN LISTS INPUTS)
  if(KEEP_EXTENSION)
    get_filename_component(_name ${_file} NAME)
  else()
    get_filename_component(_name ${_file} NAME_WE)
  endif()
  file(READ ${_file} _hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," _bytes "${_hex}")
  string(APPEND _body "const unsigned char kResource${_index}[] = {${_bytes}};\n")
  string(APPEND _table "    {\"${_name}\", {kResource${_index}, sizeof(kResource${_index})}},\n")
  math(EXPR _index "${_index} + 1")
endforeach()
file(WRITE ${OUTPUT} "// Generated from ${ORIGIN}; do not edit.
#include \"${HEADER}\"

#include <string_view>
#include <utility>

namespace ${NAMESPACE} {
namespace {
${_body}
struct Entry {
  std::string_view name;
  std::span<const unsigned char> bytes;
};
const Entry kEntries[] = {
${_table}    {\"\", {}},
};
}  // namespace

std::span<const unsigned char> ${FUNCTION}(std::string_view name) {
  for (const Entry& entry : kEntries) {
    if (!entry.name.empty() && entry.name == name) return entry.bytes;
  }
  return {};
}

}  // namespace ${NAMESPACE}
")
