# Cross-compiles for Windows x64 with clang, over the headers and libraries of mingw-w64's GCC: a second opinion on the code.
include("${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake")
set(gcc "${CMAKE_CXX_COMPILER}")
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)

# clang finds neither this variant of GCC by itself nor its C++ library, and must not look into the machine's own /usr/include.
execute_process(COMMAND "${gcc}" -print-file-name=libstdc++.a OUTPUT_VARIABLE library OUTPUT_STRIP_TRAILING_WHITESPACE)
get_filename_component(gcc_folder "${library}" DIRECTORY)
set(cxx_folder "${gcc_folder}/include/c++")
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES "${cxx_folder}" "${cxx_folder}/x86_64-w64-mingw32" "${cxx_folder}/backward"
                                           "${CMAKE_FIND_ROOT_PATH}/include")
set(CMAKE_C_STANDARD_INCLUDE_DIRECTORIES "${CMAKE_FIND_ROOT_PATH}/include")
set(CMAKE_C_FLAGS_INIT "-nostdlibinc -pthread")
# The definition: clang would take for inline what GCC's library, on this system, holds.
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -nostdlibinc -pthread -D__GXX_TYPEINFO_EQUALITY_INLINE=0")
foreach(kind EXE SHARED MODULE)
    # clang's own linker: GNU's complains when a static link meets the same inline data from both compilers. The flags for
    # compiling reach it as well, unused.
    set(CMAKE_${kind}_LINKER_FLAGS_INIT
        "-fuse-ld=lld -B${gcc_folder} -L${gcc_folder} -Wno-unused-command-line-argument")
endforeach()
