# CPack reads this before it packs: the files of a package are as old as the last commit, so that the
# same commit gives the same bytes. In an archive of the sources git has put the time in its place.
# Where there is neither git nor such an archive, they are as old as the changelog.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  file(READ ${CMAKE_CURRENT_LIST_DIR}/source_date source_date)
  if(NOT source_date MATCHES "^[0-9]+")
    execute_process(
      COMMAND git -C ${CMAKE_CURRENT_LIST_DIR} log -1 --format=%ct
      OUTPUT_VARIABLE source_date ERROR_QUIET)
  endif()
  if(NOT source_date MATCHES "^[0-9]+")
    file(TIMESTAMP ${CMAKE_CURRENT_LIST_DIR}/../../CHANGELOG.md source_date "%s" UTC)
  endif()
  string(STRIP "${source_date}" source_date)
  set(ENV{SOURCE_DATE_EPOCH} ${source_date})
endif()
