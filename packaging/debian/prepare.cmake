# Turns what `cmake --install` installs into what Debian's policy asks for. CPack runs this on the
# files of the packages before it packs them.

# write_changelog(<package> <doc folder>)
function(write_changelog package doc)
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(WRITE ${doc}/changelog.Debian
       "${package} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) bookworm; "
       "urgency=medium\n\n  * What is new stands in changelog.gz of plenvorith.\n\n"
       " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  execute_process(COMMAND gzip -9n ${doc}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# write_copyright(<licence> <doc folder>)
function(write_copyright licence doc)
  file(READ ${licence} text)
  string(REGEX MATCH "Copyright [^\n]*" holder "${text}")
  string(REGEX REPLACE "^.*Copyright [^\n]*\n\n" "" terms "${text}")
  string(REGEX REPLACE "\n\n" "\n.\n" terms "${terms}")
  string(REGEX REPLACE "([^\n]+)" " \\1" terms "${terms}")
  file(WRITE ${doc}/copyright
       "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
       "\nFiles: *\n${holder}\nLicense: Expat\n${terms}")
endfunction()

# write_overrides(<package> <usr folder>): what lintian need not tell
function(write_overrides package usr)
  file(WRITE ${usr}/share/lintian/overrides/${package}
       "# The package is not uploaded to Debian.\n"
       "${package}: initial-upload-closes-no-bugs\n")
endfunction()

set(programs ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/programs/usr)
set(doc ${programs}/share/doc/plenvorith)
set(development ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/development/usr)
set(development_doc ${development}/share/doc/libplenvorith-dev)

write_copyright(${doc}/LICENSE ${development_doc})
write_changelog(libplenvorith-dev ${development_doc})
write_overrides(libplenvorith-dev ${development})
file(GLOB_RECURSE archives ${development}/lib/*.a)
execute_process(COMMAND strip --strip-debug --enable-deterministic-archives
                        --remove-section=.gnu.lto_* --remove-section=.gnu.debuglto_*
                        --remove-section=.comment ${archives} COMMAND_ERROR_IS_FATAL ANY)

set(python ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/python/usr)
set(python_doc ${python}/share/doc/python3-plenvorith)
write_copyright(${doc}/LICENSE ${python_doc})
write_changelog(python3-plenvorith ${python_doc})
write_overrides(python3-plenvorith ${python})

write_copyright(${doc}/LICENSE ${doc})
write_changelog(plenvorith ${doc})
write_overrides(plenvorith ${programs})
file(APPEND ${programs}/share/lintian/overrides/plenvorith
     "# _FORTIFY_SOURCE is on; it finds no buffer of known size to check in the smaller programs.\n"
     "plenvorith: hardening-no-fortify-functions *\n"
     "# Machine code that happens to read like a word.\n"
     "plenvorith: spelling-error-in-binary *\n")
file(GLOB binaries ${programs}/bin/*)
foreach(binary IN LISTS binaries)
  file(READ ${binary} magic LIMIT 4 HEX)
  if(magic STREQUAL "7f454c46")
    execute_process(COMMAND strip --remove-section=.comment --remove-section=.note ${binary}
                            COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
file(RENAME ${doc}/CHANGELOG.md ${doc}/changelog)
file(REMOVE ${doc}/LICENSE)
file(GLOB compressed ${programs}/share/man/man1/*.1 ${doc}/changelog)
execute_process(COMMAND gzip -9n ${compressed} COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${programs}/share/zsh/site-functions ${programs}/share/zsh/vendor-completions)
