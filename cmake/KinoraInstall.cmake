# The package: DLL, import library, headers, programs, examples and docs, found by find_package(KinoraVeltrixCoupling).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/KinoraVeltrixCoupling")
set(header_folder "${CMAKE_INSTALL_INCLUDEDIR}/KinoraVeltrixCoupling")

# Headers keep the folders under which they include one another.
install(DIRECTORY interface DESTINATION "${header_folder}" FILES_MATCHING PATTERN "*.h")
install(FILES coupling/KinoraVeltrixCoupling.h DESTINATION "${header_folder}/coupling")
install(FILES comutils/ComUtils.h DESTINATION "${header_folder}/comutils")
target_include_directories(KinoraVeltrixCoupling INTERFACE "$<INSTALL_INTERFACE:${header_folder}>")

set_target_properties(KinoraVeltrixCoupling PROPERTIES EXPORT_NAME VeltrixCoupling)
install(TARGETS KinoraVeltrixCoupling EXPORT KinoraVeltrixCoupling)
install(EXPORT KinoraVeltrixCoupling NAMESPACE Kinora:: DESTINATION "${package_folder}"
        FILE KinoraVeltrixCouplingConfig.cmake)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/KinoraVeltrixCouplingConfigVersion.cmake"
                                 COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_BINARY_DIR}/KinoraVeltrixCouplingConfigVersion.cmake" DESTINATION "${package_folder}")

install(TARGETS kinora-run vantor-sim vantor-trace RUNTIME)
# Nobody links these, so their import libraries stay behind.
install(FILES "$<TARGET_FILE:vantor-sim-inprocess>" "$<TARGET_FILE:vantor-trace-server>" DESTINATION "${CMAKE_INSTALL_BINDIR}")
if(TARGET kinora-fmu)
    install(TARGETS kinora-fmu RUNTIME)
    install(FILES "$<TARGET_FILE:kinora_fmu>" DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
if(MINGW)
    install(FILES ${kinora_runtime_dlls} DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
install(DIRECTORY examples docs DESTINATION "${CMAKE_INSTALL_DATADIR}/KinoraVeltrixCoupling"
        PATTERN CMakeLists.txt EXCLUDE PATTERN "*.study" EXCLUDE)
# The scenarios name their schema by this place, and an example's comparison finds the closed forms there.
install(FILES host/scenario.schema.json DESTINATION "${CMAKE_INSTALL_DATADIR}/KinoraVeltrixCoupling/host")
install(FILES scripts/lib/magnets.py DESTINATION "${CMAKE_INSTALL_DATADIR}/KinoraVeltrixCoupling/scripts/lib")
install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE SECURITY.md DESTINATION "${CMAKE_INSTALL_DATADIR}/KinoraVeltrixCoupling")

# Licences of what the programs, the report page and the run-time DLLs are made of.
set(licence_folder "${CMAKE_INSTALL_DATADIR}/KinoraVeltrixCoupling/licences")
if(MINGW)
    foreach(package nlohmann-json3-dev libcli11-dev libfmt-dev libtinyobjloader-dev libeigen3-dev libvalijson-dev
                    g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev)
        install(FILES "/usr/share/doc/${package}/copyright" DESTINATION "${licence_folder}" RENAME "${package}.txt")
    endforeach()
endif()
if(MINGW AND TARGET kinora-fmu)
    install(FILES build/sources/pugixml/LICENSE.md DESTINATION "${licence_folder}" RENAME pugixml.txt)
    install(FILES build/sources/zlib/LICENSE DESTINATION "${licence_folder}" RENAME zlib.txt)
    install(FILES /usr/share/doc/libstb-dev/copyright DESTINATION "${licence_folder}" RENAME libstb-dev.txt)
endif()
if(KINORA_BUILD_REPORT)
    foreach(package three uplot)
        install(FILES "report/node_modules/${package}/LICENSE" DESTINATION "${licence_folder}" RENAME "${package}.txt"
                OPTIONAL)
    endforeach()
endif()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_VENDOR "The KinoraVeltrixCoupling maintainers")
set(CPACK_PACKAGE_FILE_NAME "KinoraVeltrixCoupling-${PROJECT_VERSION}-windows-x64")
include(CPack)
