# googletest, and how a test program becomes a ctest test.
if(MSVC)
    find_package(GTest CONFIG REQUIRED)
else()
    # Code of the tests is hardly optimised: what it tests is, and most of the build's time was the optimiser's work on
    # assertions. A little of it lets GCC leave out two thirds of the sections, and links take no time.
    set(kinora_test_optimisation $<IF:$<CXX_COMPILER_ID:GNU>,-O1,-O0>)
    set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
    set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
    add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
    foreach(library gtest gtest_main gmock gmock_main)
        set_target_properties(${library} PROPERTIES ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/googletest/lib")
        target_compile_options(${library} PRIVATE ${kinora_test_optimisation})
    endforeach()
endif()

# kinora_configure_test(target): code of the tests.
function(kinora_configure_test target)
    kinora_configure(${target})
    target_compile_options(${target} PRIVATE ${kinora_test_optimisation})
endfunction()

# googletest's headers, read once for all test programs. (The preset mingw-clang goes without, and so shows a test that
# forgets to include them.)
add_library(kinora_test_headers OBJECT "${PROJECT_SOURCE_DIR}/cmake/Precompiled.cpp")
kinora_configure_test(kinora_test_headers)
target_link_libraries(kinora_test_headers PRIVATE GTest::gmock)
kinora_precompile(kinora_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h> <algorithm> <filesystem> <functional> <map>
                                              <string> <vector>)

if(WIN32 AND NOT MSVC)
    # A warm Wine prefix before the first test, nothing left running after the last.
    add_test(NAME wine-start COMMAND "${PROJECT_SOURCE_DIR}/scripts/wine-prefix" start)
    set_tests_properties(wine-start PROPERTIES FIXTURES_SETUP wine TIMEOUT 120)
    add_test(NAME wine-stop COMMAND "${PROJECT_SOURCE_DIR}/scripts/wine-prefix" stop)
    set_tests_properties(wine-stop PROPERTIES FIXTURES_CLEANUP wine TIMEOUT 60)
endif()

# kinora_leave_out_under_wine(list name...): takes sources <name>Test.cpp off a list. What knows no files and no system is tested
# natively, and on Windows itself; under Wine the rest will do.
function(kinora_leave_out_under_wine list)
    if(WIN32 AND NOT MSVC AND NOT KINORA_ALL_TESTS)
        list(JOIN ARGN "|" names)
        list(FILTER ${list} EXCLUDE REGEX "(^|/)(${names})Test.cpp$")
        set(${list} "${${list}}" PARENT_SCOPE)
    endif()
endfunction()

# The target tests-LABEL builds all programs of a label.
# kinora_add_test(NAME name SOURCES ... LIBRARIES ... LABELS ... [TIMEOUT seconds] [SERIAL] [APART])
# One googletest program, one ctest test. Its sources are compiled together (KinoraTarget.cmake); APART: each by itself.
function(kinora_add_test)
    cmake_parse_arguments(arg "APART;SERIAL" "NAME;TIMEOUT" "SOURCES;LIBRARIES;LABELS" ${ARGN})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    add_executable(${arg_NAME} ${arg_SOURCES})
    kinora_configure_test(${arg_NAME})
    if(NOT arg_APART)
        kinora_compile_together(${arg_NAME})
        # GCC takes sources that are compiled together for headers, whose unnamed namespaces would be several.
        target_compile_options(${arg_NAME} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
    endif()
    target_link_libraries(${arg_NAME} PRIVATE ${arg_LIBRARIES} GTest::gmock_main)
    if("kinora_test_support" IN_LIST arg_LIBRARIES)
        kinora_precompile(${arg_NAME} REUSE_FROM kinora_test_support) # the platform's headers too
    else()
        kinora_precompile(${arg_NAME} REUSE_FROM kinora_test_headers)
    endif()
    foreach(label ${arg_LABELS})
        if(NOT TARGET tests-${label})
            add_custom_target(tests-${label})
        endif()
        add_dependencies(tests-${label} ${arg_NAME})
    endforeach()
    add_test(NAME ${arg_NAME} COMMAND ${arg_NAME} --gtest_brief=1)
    set_tests_properties(${arg_NAME} PROPERTIES TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}"
                                                RUN_SERIAL "${arg_SERIAL}")
    if(WIN32 AND NOT MSVC)
        set_tests_properties(${arg_NAME} PROPERTIES FIXTURES_REQUIRED wine)
    endif()
    if(KINORA_CHECKED)
        # Wine's heap then marks the ends of blocks and what is free, and a look at the heap sees what was overwritten.
        set_tests_properties(${arg_NAME} PROPERTIES ENVIRONMENT WINEDEBUG=-all,err+heap,warn+heap)
    endif()
endfunction()

# kinora_run_in_own_prefix(name prefix seconds [REGISTER]): has a test program run in a Wine prefix that no other test uses, so
# that it may end servers, change the registration or quit the simulator (REGISTER: registered there) beside the others.
function(kinora_run_in_own_prefix name prefix seconds)
    if(MSVC)
        return()
    endif()
    set_property(TARGET ${name} PROPERTY CROSSCOMPILING_EMULATOR "${PROJECT_SOURCE_DIR}/tests/in-own-prefix;${prefix}")
    math(EXPR longest "${seconds} - 20") # the prefix is stopped after that
    set(environment KINORA_LONGEST=${longest})
    if("REGISTER" IN_LIST ARGN)
        list(APPEND environment KINORA_REGISTER=ON)
    endif()
    set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT ${environment})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${seconds} FIXTURES_REQUIRED "")
endfunction()
