# Run by CPack over what it is about to pack.
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_DIRECTORY}/*.[1-9])
list(FILTER pages INCLUDE REGEX "/share/man/man[1-9]/")
foreach(page ${pages})
    execute_process(COMMAND gzip -9nf ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
