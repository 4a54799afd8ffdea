# Turns what `cmake --install` installs into what Debian's policy asks for. CPack runs this on the
# files of the package before it packs them.
set(usr ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr)
set(doc ${usr}/share/doc/plenvorith)

file(READ ${doc}/LICENSE licence)
string(REGEX MATCH "Copyright [^\n]*" holder "${licence}")
string(REGEX REPLACE "^.*Copyright [^\n]*\n\n" "" terms "${licence}")
string(REGEX REPLACE "\n\n" "\n.\n" terms "${terms}")
string(REGEX REPLACE "([^\n]+)" " \\1" terms "${terms}")
file(WRITE ${doc}/copyright
     "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
     "\nFiles: *\n${holder}\nLicense: Expat\n${terms}")
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${doc}/changelog.Debian
     "plenvorith (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) bookworm; "
     "urgency=medium\n\n  * What is new stands in changelog.gz.\n\n"
     " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
file(RENAME ${doc}/CHANGELOG.md ${doc}/changelog)
file(REMOVE ${doc}/LICENSE)

file(GLOB compressed ${usr}/share/man/man1/*.1 ${doc}/changelog ${doc}/changelog.Debian)
execute_process(COMMAND gzip -9n ${compressed} COMMAND_ERROR_IS_FATAL ANY)

file(RENAME ${usr}/share/zsh/site-functions ${usr}/share/zsh/vendor-completions)
