# Builds a file into the program: writes a C++ source whose function returns
# the file's bytes as a std::string_view.
#   cmake -DINPUT=<file> -DOUTPUT=<source.cpp> -DNAMESPACE=<ns> -DFUNCTION=<name>
#         -P EmbedResource.cmake
file(READ "${INPUT}" hex HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
string(REGEX REPLACE "((0x[0-9a-f][0-9a-f],){24})" "\\1\n" bytes "${bytes}")
get_filename_component(name "${INPUT}" NAME)
file(WRITE "${OUTPUT}.tmp"
"// Generated from ${name} by EmbedResource.cmake; do not edit.
#include <string_view>

namespace ${NAMESPACE} {
namespace {
constexpr unsigned char kBytes[] = {
${bytes}
};
}  // namespace

std::string_view ${FUNCTION}() {
  return {reinterpret_cast<const char*>(kBytes), sizeof kBytes};
}

}  // namespace ${NAMESPACE}
")
# Unchanged output keeps its time stamp, so nothing recompiles for nothing.
file(COPY_FILE "${OUTPUT}.tmp" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.tmp")
