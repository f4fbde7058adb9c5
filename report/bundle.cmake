# cmake -DNODE=... -DNPM=... -DOUT=FOLDER -P bundle.cmake: installs the pinned packages when needed, then bundles the pages.
# Several build folders share the packages, so one at a time.
file(LOCK "${CMAKE_CURRENT_LIST_DIR}/.bundle.lock" GUARD PROCESS TIMEOUT 600)

set(installed "${CMAKE_CURRENT_LIST_DIR}/node_modules/.package-lock.json")
if("${CMAKE_CURRENT_LIST_DIR}/package-lock.json" IS_NEWER_THAN "${installed}")
    execute_process(COMMAND "${NPM}" ci --no-audit --no-fund --ignore-scripts --loglevel=error
                    WORKING_DIRECTORY "${CMAKE_CURRENT_LIST_DIR}" RESULT_VARIABLE status OUTPUT_QUIET)
    if(NOT status EQUAL 0)
        # The library does not wait for its page; the programs say so when they find none.
        message(WARNING "npm could not install the packages of the report page (report/package-lock.json), which come from "
                        "the npm registry: built without it. Check the network and build again.")
        return()
    endif()
    file(TOUCH "${installed}")
endif()

execute_process(COMMAND "${NODE}" "${CMAKE_CURRENT_LIST_DIR}/build.mjs" "${OUT}" RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "The report page could not be bundled.")
endif()
