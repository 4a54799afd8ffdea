# CPack reads this before it packs: the files of a package are as old as the last commit, so that the
# same commit gives the same bytes. In an archive of the sources git has put the time in its place.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  file(READ ${CMAKE_CURRENT_LIST_DIR}/source_date source_date)
  if(NOT source_date MATCHES "^[0-9]+")
    execute_process(
      COMMAND git -C ${CMAKE_CURRENT_LIST_DIR} log -1 --format=%ct
      OUTPUT_VARIABLE source_date COMMAND_ERROR_IS_FATAL ANY)
  endif()
  string(STRIP "${source_date}" source_date)
  set(ENV{SOURCE_DATE_EPOCH} ${source_date})
endif()
