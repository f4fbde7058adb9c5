# The package for Windows: DLL, import library, headers, programs, examples and docs, as a ZIP and as an installer that asks for
# components. Programs of others find it by find_package(KinoraVeltrixCoupling).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
# Python makes the wheel and the HTML pages while the package is made. The system's own first: it has the Debian packages.
option(KINORA_PACKAGE_PAGES "HTML pages in the package, which takes Python's package markdown" ON)
find_program(KINORA_PYTHON NAMES python3 python PATHS /usr/bin NO_CMAKE_SYSTEM_PATH NO_SYSTEM_ENVIRONMENT_PATH)
find_program(KINORA_PYTHON NAMES python3 python)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/KinoraVeltrixCoupling")
set(header_folder "${CMAKE_INSTALL_INCLUDEDIR}/KinoraVeltrixCoupling")
set(shared_folder "${CMAKE_INSTALL_DATADIR}/KinoraVeltrixCoupling")

# Headers keep the folders under which they include one another.
install(DIRECTORY interface DESTINATION "${header_folder}" COMPONENT sdk FILES_MATCHING PATTERN "*.h")
install(FILES coupling/KinoraVeltrixCoupling.h DESTINATION "${header_folder}/coupling" COMPONENT sdk)
install(FILES comutils/ComUtils.h DESTINATION "${header_folder}/comutils" COMPONENT sdk)
target_include_directories(KinoraVeltrixCoupling INTERFACE "$<INSTALL_INTERFACE:${header_folder}>")

set_target_properties(KinoraVeltrixCoupling PROPERTIES EXPORT_NAME VeltrixCoupling)
install(TARGETS KinoraVeltrixCoupling EXPORT KinoraVeltrixCoupling RUNTIME COMPONENT runtime ARCHIVE COMPONENT sdk)
install(EXPORT KinoraVeltrixCoupling NAMESPACE Kinora:: DESTINATION "${package_folder}" COMPONENT sdk
        FILE KinoraVeltrixCouplingConfig.cmake)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/KinoraVeltrixCouplingConfigVersion.cmake"
                                 COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_BINARY_DIR}/KinoraVeltrixCouplingConfigVersion.cmake" DESTINATION "${package_folder}" COMPONENT sdk)
if(MINGW)
    install(FILES ${kinora_runtime_dlls} DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
endif()

# The simulator. Nobody links the DLLs of this and the next component, so their import libraries stay behind.
install(TARGETS vantor-sim RUNTIME COMPONENT simulator)
install(FILES "$<TARGET_FILE:vantor-sim-inprocess>" DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT simulator)

# The host and the programs around it.
install(TARGETS kinora-run vantor-trace RUNTIME COMPONENT host)
install(FILES "$<TARGET_FILE:vantor-trace-server>" DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT host)
if(TARGET kinora-fmu)
    install(TARGETS kinora-fmu RUNTIME COMPONENT host)
    install(FILES "$<TARGET_FILE:kinora_fmu>" DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT host)
endif()
# The scenarios name their schema by this place.
install(FILES host/scenario.schema.json DESTINATION "${shared_folder}/host" COMPONENT host)

# The examples, and what their comparisons with closed forms import.
install(DIRECTORY examples DESTINATION "${shared_folder}" COMPONENT examples
        PATTERN CMakeLists.txt EXCLUDE PATTERN "*.study" EXCLUDE)
install(FILES packaging/windows/examples/CMakeLists.txt DESTINATION "${shared_folder}/examples" COMPONENT examples)
install(FILES scripts/lib/magnets.py DESTINATION "${shared_folder}/scripts/lib" COMPONENT examples)
install(FILES packaging/windows/demo.cmd DESTINATION . COMPONENT examples)

install(DIRECTORY docs DESTINATION "${shared_folder}" COMPONENT docs)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md DESTINATION "${shared_folder}" COMPONENT docs)
install(FILES LICENSE DESTINATION "${shared_folder}" COMPONENT runtime)

# Licences of what the programs, the report page and the run-time DLLs are made of.
set(licence_folder "${shared_folder}/licences")
if(MINGW)
    foreach(package nlohmann-json3-dev libcli11-dev libfmt-dev libtinyobjloader-dev libeigen3-dev libvalijson-dev
                    g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev)
        install(FILES "/usr/share/doc/${package}/copyright" DESTINATION "${licence_folder}" COMPONENT runtime
                RENAME "${package}.txt")
    endforeach()
endif()
if(MINGW AND TARGET kinora-fmu)
    install(FILES build/sources/pugixml/LICENSE.md DESTINATION "${licence_folder}" COMPONENT runtime RENAME pugixml.txt)
    install(FILES build/sources/zlib/LICENSE DESTINATION "${licence_folder}" COMPONENT runtime RENAME zlib.txt)
    install(FILES /usr/share/doc/libstb-dev/copyright DESTINATION "${licence_folder}" COMPONENT runtime RENAME libstb-dev.txt)
endif()
if(KINORA_BUILD_REPORT)
    foreach(package three uplot)
        install(FILES "report/node_modules/${package}/LICENSE" DESTINATION "${licence_folder}" COMPONENT runtime
                RENAME "${package}.txt" OPTIONAL)
    endforeach()
endif()

# kinora_install_made(component folder script argument...): what a Python script of ours writes into a folder of the package.
function(kinora_install_made component folder)
    if(NOT KINORA_PYTHON)
        return()
    endif()
    list(JOIN ARGN "\" \"" command)
    install(CODE "execute_process(COMMAND \"${KINORA_PYTHON}\" -B \"${command}\" \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}\"
                                  WORKING_DIRECTORY \"${PROJECT_SOURCE_DIR}\" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)"
            COMPONENT ${component})
endfunction()
set(licences "")
if(MINGW)
    foreach(package g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev)
        list(APPEND licences --licence "${package}.txt=/usr/share/doc/${package}/copyright")
    endforeach()
endif()
kinora_install_made(python "${shared_folder}/python" bindings/python/make_wheel.py ${licences} "$<TARGET_FILE:kinora_veltrix>")
if(KINORA_PACKAGE_PAGES)
    kinora_install_made(docs "${shared_folder}/html" scripts/lib/html_docs.py --files .. .)
endif()

include(KinoraPackage)
