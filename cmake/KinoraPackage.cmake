# What CPack makes of the installed files: a ZIP with all of them, and an installer that asks for components.
set(CPACK_GENERATOR ZIP NSIS)
set(CPACK_PACKAGE_VENDOR "The KinoraVeltrixCoupling maintainers")
set(CPACK_PACKAGE_VERSION "${KINORA_VERSION}")
set(CPACK_PACKAGE_FILE_NAME "KinoraVeltrixCoupling-${KINORA_VERSION}-windows-x64")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
# The folder has the installer's template, which names them too.
set(CPACK_MODULE_PATH "${PROJECT_SOURCE_DIR}/packaging/windows")
set(CPACK_COMPONENTS_ALL runtime simulator host examples sdk python docs)
set(CPACK_NSIS_COMPRESSOR "/SOLID lzma")
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/PackageTimes.cmake")
include(CPack)
