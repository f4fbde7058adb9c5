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

install(TARGETS kinora-run vantor-sim RUNTIME)
if(MINGW)
    install(FILES ${kinora_runtime_dlls} DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
install(DIRECTORY examples docs DESTINATION "${CMAKE_INSTALL_DATADIR}/KinoraVeltrixCoupling"
        PATTERN CMakeLists.txt EXCLUDE)
install(FILES README.md CHANGELOG.md LICENSE DESTINATION "${CMAKE_INSTALL_DATADIR}/KinoraVeltrixCoupling")

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_VENDOR "The KinoraVeltrixCoupling maintainers")
set(CPACK_PACKAGE_FILE_NAME "KinoraVeltrixCoupling-${PROJECT_VERSION}-windows-x64")
include(CPack)
