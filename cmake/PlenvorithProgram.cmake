# plenvorith_program(<target> [<file>...])
#
# One program, installed with the man page and the completions of its name; without files, a script
# of that name in script/. All programs lie in one folder, bin in that of the build, and are built as
# plenvorith_programs.
function(plenvorith_program name)
  if(NOT TARGET plenvorith_programs)
    add_custom_target(plenvorith_programs)
  endif()
  if(ARGN)
    add_executable(${name} ${ARGN})
    target_link_libraries(${name} PRIVATE plenvorith::flags)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
    add_dependencies(plenvorith_programs ${name})
    # Finds a kernel outside the system's folders after installation, too.
    set_target_properties(${name} PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
  endif()
  if(NOT PROJECT_IS_TOP_LEVEL)
    return()
  endif()

  if(ARGN)
    install(TARGETS ${name})
  else()
    install(PROGRAMS ${PROJECT_SOURCE_DIR}/script/${name} TYPE BIN)
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/docs/${name}.1 ${PROJECT_BINARY_DIR}/docs/${name}.1 @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/docs/${name}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  # bash-completion looks for a file named like the command.
  install(
    FILES ${PROJECT_SOURCE_DIR}/packaging/completion/${name}.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME ${name})
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/completion/_${name}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
endfunction()
