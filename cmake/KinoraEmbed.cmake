# kinora_embed(<target> <function> FILE <file> HEADER <header> NAMESPACE <namespace>): builds a file into a target as bytes. The
# header declares the function that gives them, a std::string_view.
function(kinora_embed target function)
    cmake_parse_arguments(arg "" "FILE;HEADER;NAMESPACE" "" ${ARGN})
    set(source "${CMAKE_CURRENT_BINARY_DIR}/${function}.cpp")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${arg_FILE}")
    file(READ "${arg_FILE}" bytes HEX)
    string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
    file(CONFIGURE OUTPUT "${source}" CONTENT [[
#include "@arg_HEADER@"

namespace @arg_NAMESPACE@ {
namespace {
constexpr char bytesOf@function@[] = {@bytes@};
} // namespace

std::string_view @function@() { return {bytesOf@function@, sizeof(bytesOf@function@)}; }
} // namespace @arg_NAMESPACE@
]] @ONLY)
    target_sources(${target} PRIVATE "${source}")
endfunction()
