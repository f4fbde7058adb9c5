# What every target of this project is built with. Compiler differences stand here and nowhere else.
function(kinora_configure target)
    target_compile_features(${target} PUBLIC cxx_std_17)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                               VISIBILITY_INLINES_HIDDEN ON)
    target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>")
    if(WIN32)
        target_compile_definitions(${target} PRIVATE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
                                                     _WIN32_WINNT=0x0A00)
    endif()
    if(MSVC)
        # 4324: padding that an alignas asks for is wanted. The dynamic runtime is CMake's default.
        target_compile_options(${target} PRIVATE /W4 /permissive- /Zc:__cplusplus /utf-8 /guard:cf /EHsc /bigobj /wd4324
                                                 $<$<BOOL:${KINORA_WARNINGS_AS_ERRORS}>:/WX>)
        target_link_options(${target} PRIVATE /guard:cf)
        # getenv is the documented way in which the environment is read.
        target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
        return()
    endif()
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                             $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
                                             $<$<BOOL:${KINORA_WARNINGS_AS_ERRORS}>:-Werror>)
    if(KINORA_CHECKED)
        target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)
        target_compile_options(${target} PRIVATE -fstack-protector-strong -fsanitize=undefined
                                                 -fsanitize-undefined-trap-on-error)
        target_link_options(${target} PRIVATE -fstack-protector-strong)
    endif()
    if(KINORA_SANITIZE)
        # Bad pointers are the address sanitizer's; to ask about them twice would take a fourth of the compiler's time.
        set(seen_by_address null alignment object-size pointer-overflow vptr)
        list(JOIN seen_by_address "," seen_by_address)
        target_compile_options(${target} PRIVATE -fsanitize=address,undefined -fno-sanitize=${seen_by_address}
                                                 -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=address,undefined)
    endif()
    if(KINORA_SANITIZE_THREAD)
        target_compile_options(${target} PRIVATE -fsanitize=thread)
        target_link_options(${target} PRIVATE -fsanitize=thread)
    endif()
    if(MINGW)
        # Equal sources give equal files.
        target_link_options(${target} PRIVATE -Wl,--no-insert-timestamp)
    endif()
endfunction()

# Rooms that the fuzzer searches: optimised with sanitizers too, and telling the fuzzer which branches an input takes.
function(kinora_searched target)
    if(KINORA_SANITIZE)
        target_compile_options(${target} PRIVATE -O1 $<$<CXX_COMPILER_ID:Clang>:-fsanitize=fuzzer-no-link>)
    endif()
endfunction()

# Rooms whose tests calculate much: optimised with sanitizers too.
function(kinora_calculates target)
    if(KINORA_SANITIZE)
        set(left_alone "${PROJECT_SOURCE_DIR}/cmake/sanitizers.txt")
        target_compile_options(${target} PRIVATE -O1 $<$<CXX_COMPILER_ID:Clang>:-fsanitize-ignorelist=${left_alone}>)
    endif()
endfunction()

# Rooms in which a run spends its time: optimised to the last in a release.
function(kinora_optimise target)
    if(NOT MSVC)
        target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O3>)
    endif()
endfunction()

# Rooms of many small sources, which compile in a fifth of the time when the compiler sees them together: most of it goes into what
# they all include. (So names of the unnamed namespaces differ within such a room.)
function(kinora_compile_together target)
    if(KINORA_TOGETHER)
        set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 0)
    endif()
endfunction()

# kinora_precompile(target [PRIVATE <header>...] [REUSE_FROM owner]): headers of others that are read once for many sources. The
# options are what ccache asks for then.
function(kinora_precompile target)
    if(NOT MSVC)
        target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>
                                                 "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
    endif()
    target_precompile_headers(${target} ${ARGN})
endfunction()

# A console program whose main is wmain (mingw needs to be told).
function(kinora_wide_main target)
    if(MINGW)
        target_link_options(${target} PRIVATE -municode)
    endif()
endfunction()

# A binary that brings the compiler's runtime along (mingw; elsewhere the dynamic runtime serves everywhere).
function(kinora_static_runtime target)
    if(MINGW)
        target_link_options(${target} PRIVATE -static)
    endif()
endfunction()

# A binary that users get: names of functions are no use to them, and most of the size (mingw; elsewhere they lie apart or nobody
# gets it).
function(kinora_without_symbols target)
    if(MINGW)
        target_link_options(${target} PRIVATE $<$<CONFIG:Release>:-s>)
    endif()
endfunction()

# kinora_export_only(target definition): a shared library elsewhere than on Windows shows the functions of a module definition
# file, and stays loaded once it is.
function(kinora_export_only target definition)
    file(STRINGS "${definition}" names REGEX "^ +[A-Za-z0-9_]+$")
    list(TRANSFORM names STRIP)
    list(JOIN names "; " names)
    set(script "${CMAKE_CURRENT_BINARY_DIR}/${target}.version")
    file(CONFIGURE OUTPUT "${script}" CONTENT "{ global: @names@; local: *; };\n" @ONLY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${definition}")
    target_link_options(${target} PRIVATE "-Wl,--version-script=${script}" -Wl,-z,nodelete)
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${script}")
endfunction()

# Sources that implement COM interfaces: those have no virtual destructor by design, objects delete themselves in Release.
function(kinora_implements_com target)
    if(NOT MSVC)
        target_compile_options(${target} PUBLIC -Wno-non-virtual-dtor)
    endif()
endfunction()

# Warnings of somebody else's code stay out of our build.
function(kinora_silence_source file)
    if(NOT MSVC)
        set_property(SOURCE "${file}" APPEND PROPERTY COMPILE_OPTIONS -w)
    endif()
endfunction()

# For heavy templates that run once per program. Hardly optimised, GCC compiles them fastest; without any optimisation every
# template becomes a section of its own, ten thousands of them, over which the archiver and each link take long.
function(kinora_compile_fast file)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU") # other compilers may have it together with the rest
        set_property(SOURCE "${file}" APPEND PROPERTY COMPILE_OPTIONS -Og)
    endif()
endfunction()

# For templates of others about which the sanitizers give false alarms.
function(kinora_trust file)
    set_property(SOURCE "${file}" APPEND PROPERTY COMPILE_OPTIONS $<$<BOOL:${KINORA_SANITIZE}>:-fno-sanitize=all>)
    set_property(SOURCE "${file}" PROPERTY SKIP_PRECOMPILE_HEADERS ON)
endfunction()

# The mingw runtime DLLs, copied beside the binaries once.
if(MINGW)
    set(kinora_runtime_dlls "")
    set(dlls libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    if(KINORA_CHECKED)
        list(APPEND dlls libssp-0.dll) # stack protection
    endif()
    separate_arguments(search UNIX_COMMAND "${CMAKE_EXE_LINKER_FLAGS}") # where clang is told to look
    foreach(dll ${dlls})
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} ${search} -print-file-name=${dll} OUTPUT_VARIABLE path
                        OUTPUT_STRIP_TRAILING_WHITESPACE)
        if(NOT EXISTS "${path}")
            set(path "/usr/x86_64-w64-mingw32/lib/${dll}")
        endif()
        list(APPEND kinora_runtime_dlls "${path}")
    endforeach()
    file(COPY ${kinora_runtime_dlls} DESTINATION "${CMAKE_BINARY_DIR}/bin")
    # Without the symbols that they come with: a tenth of the size.
    list(TRANSFORM kinora_runtime_dlls REPLACE "^.*/" "${CMAKE_BINARY_DIR}/bin/")
    execute_process(COMMAND "${CMAKE_STRIP}" ${kinora_runtime_dlls} COMMAND_ERROR_IS_FATAL ANY)
endif()
