# A draft, not run yet. An overlay port: it builds the checkout that it stands in,
#   vcpkg install kinora-veltrix-coupling --overlay-ports=packaging/vcpkg
# A port for everybody would fetch the sources of a release here instead.
cmake_path(NORMAL_PATH CURRENT_PORT_DIR)
cmake_path(SET SOURCE_PATH NORMALIZE "${CURRENT_PORT_DIR}/../../..")

vcpkg_cmake_configure(
    SOURCE_PATH "${SOURCE_PATH}"
    OPTIONS -DKINORA_BUILD_TESTS=OFF -DKINORA_BUILD_REPORT=OFF -DKINORA_PACKAGE_PAGES=OFF -DKINORA_TOGETHER=OFF
            -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME KinoraVeltrix CONFIG_PATH lib/cmake/KinoraVeltrix DO_NOT_DELETE_PARENT_CONFIG_PATH)
vcpkg_cmake_config_fixup(PACKAGE_NAME KinoraVeltrixCoupling CONFIG_PATH lib/cmake/KinoraVeltrixCoupling)
vcpkg_fixup_pkgconfig()
vcpkg_copy_tools(TOOL_NAMES kinora-run kinora-report vantor-sim vantor-trace AUTO_CLEAN)
# Libraries only: demo and documents come with the package for users.
file(REMOVE "${CURRENT_PACKAGES_DIR}/demo.cmd" "${CURRENT_PACKAGES_DIR}/debug/demo.cmd")
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share"
                    "${CURRENT_PACKAGES_DIR}/share/KinoraVeltrixCoupling")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
