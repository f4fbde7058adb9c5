# Run by CPack on the files that it is about to pack. With SOURCE_DATE_EPOCH in the environment they are all of that time, so that
# equal files give an equal package.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(COMMAND find "${CPACK_TEMPORARY_DIRECTORY}" -exec touch --no-dereference "--date=@$ENV{SOURCE_DATE_EPOCH}" {} +
                    COMMAND_ERROR_IS_FATAL ANY)
endif()
