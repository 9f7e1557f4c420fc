# Run by cpack over what it has gathered for the packages: Debian wants manual pages compressed, and the installed tree
# of a source build keeps them as they are.
file(GLOB_RECURSE _pages "${CPACK_TEMPORARY_DIRECTORY}/*.1")
list(FILTER _pages INCLUDE REGEX "/share/man/")
foreach(_page IN LISTS _pages)
  execute_process(COMMAND gzip -9nf "${_page}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
