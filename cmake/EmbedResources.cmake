# Script mode: writes OUTPUT, a C++ file holding INPUTS as byte arrays.
set(_body "")
set(_table "")
set(_index 0)
foreach(_file IN LISTS INPUTS)
  get_filename_component(_name ${_file} NAME_WE)
  file(READ ${_file} _hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," _bytes "${_hex}")
  string(APPEND _body "const unsigned char kResource${_index}[] = {${_bytes}};\n")
  string(APPEND _table "    {\"${_name}\", {kResource${_index}, sizeof(kResource${_index})}},\n")
  math(EXPR _index "${_index} + 1")
endforeach()
file(WRITE ${OUTPUT} "// Generated from data/resources; do not edit.
#include \"folvant/platform/Resources.h\"

#include <string_view>
#include <utility>

namespace folvant::platform {
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

std::span<const unsigned char> Resource(std::string_view name) {
  for (const Entry& entry : kEntries) {
    if (!entry.name.empty() && entry.name == name) return entry.bytes;
  }
  return {};
}

}  // namespace folvant::platform
")
