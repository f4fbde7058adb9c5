# The C interface for programs of others: library, header, and what find_package(KinoraVeltrix) and pkg-config read. Natively a
# component of its own: cmake --install BUILD_FOLDER --component capi --prefix FOLDER. Everything may be moved together.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Natively all of it is one component; the package for Windows has it in two.
set(capi_used capi)
set(capi_built_with capi)
if(WIN32)
    set(capi_used runtime)
    set(capi_built_with sdk)
endif()

set(capi_header_folder "${CMAKE_INSTALL_INCLUDEDIR}/KinoraVeltrixCoupling/capi")
set(capi_package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/KinoraVeltrix")

# The interface only grows, so the number stays.
set_target_properties(kinora_veltrix PROPERTIES SOVERSION 1)
install(TARGETS kinora_veltrix RUNTIME COMPONENT ${capi_used} ARCHIVE COMPONENT ${capi_built_with}
        LIBRARY COMPONENT ${capi_used} NAMELINK_COMPONENT ${capi_built_with})
if(TARGET kinora_veltrix_import_library) # for MSVC, made by another compiler
    install(FILES "${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/kinora_veltrix.lib" DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${capi_built_with})
endif()
install(FILES capi/kinora_veltrix.h DESTINATION "${capi_header_folder}" COMPONENT ${capi_built_with})

set(capi_library "${CMAKE_INSTALL_LIBDIR}/$<TARGET_SONAME_FILE_NAME:kinora_veltrix>")
if(WIN32)
    set(capi_library "${CMAKE_INSTALL_BINDIR}/$<TARGET_FILE_NAME:kinora_veltrix>")
endif()
configure_package_config_file(cmake/KinoraVeltrixConfig.cmake.in "${CMAKE_BINARY_DIR}/KinoraVeltrixConfig.cmake.part"
                              INSTALL_DESTINATION "${capi_package_folder}"
                              NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
file(GENERATE OUTPUT "${CMAKE_BINARY_DIR}/KinoraVeltrixConfig.cmake" INPUT "${CMAKE_BINARY_DIR}/KinoraVeltrixConfig.cmake.part")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/KinoraVeltrixConfigVersion.cmake" COMPATIBILITY AnyNewerVersion)
install(FILES "${CMAKE_BINARY_DIR}/KinoraVeltrixConfig.cmake" "${CMAKE_BINARY_DIR}/KinoraVeltrixConfigVersion.cmake"
        DESTINATION "${capi_package_folder}" COMPONENT ${capi_built_with})

set(capi_pkgconfig_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH capi_prefix "/${capi_pkgconfig_folder}" "/")
configure_file(cmake/kinora-veltrix.pc.in "${CMAKE_BINARY_DIR}/kinora-veltrix.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/kinora-veltrix.pc" DESTINATION "${capi_pkgconfig_folder}" COMPONENT ${capi_built_with})
