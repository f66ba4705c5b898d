# Debian requires compressed manual pages. CPack runs this on the files that it is about to pack.
file(GLOB pages "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/man/man?/*.[1-9]")
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip --best --no-name ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
