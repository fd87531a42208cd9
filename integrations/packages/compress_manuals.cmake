# Run by cpack before it packs what lies in its folder.
file(GLOB_RECURSE manuals "${CPACK_TEMPORARY_DIRECTORY}/*.[1-8]")
list(FILTER manuals INCLUDE REGEX "/share/man/")
foreach(manual IN LISTS manuals)
    execute_process(COMMAND gzip -9n "${manual}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
