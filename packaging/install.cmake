# What `cmake --install` lays out, and the Debian package made from it (`cpack -G DEB`).

# Installed binaries are stripped whether or not --strip is given: the debug information stays in the
# build tree. The variable is read by the target's install code that follows.
install(CODE "set(CMAKE_INSTALL_DO_STRIP TRUE)")
install(TARGETS corvane RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# Who makes the package, as Debian's Maintainer field and the changelog's trailer name them.
set(CPACK_PACKAGE_CONTACT "The corvane authors <corvane@users.noreply.github.com>" CACHE STRING
    "Name and address of the packages' maintainer")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://github.com/corvane/corvane")

# The license as Debian's machine-readable copyright file gives it: MIT is "Expat" there.
file(READ LICENSE license)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS LICENSE)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)" _ "${license}")
set(CORVANE_COPYRIGHT "${CMAKE_MATCH_1}")
string(REGEX REPLACE "^.*Copyright \\(c\\) [^\n]*\n" "" terms "${license}")
string(STRIP "${terms}" terms)
string(REPLACE "\n\n" "\n.\n" terms "${terms}")
string(REPLACE "\n" "\n " CORVANE_LICENSE_TERMS "${terms}")
set(docs ${CMAKE_CURRENT_BINARY_DIR}/doc)
configure_file(packaging/debian/copyright.in ${docs}/copyright @ONLY)
configure_file(packaging/debian/changelog.in ${docs}/changelog @ONLY)

# The man page and the changelog are installed compressed, without a name or time stamp in them, as
# Debian's rules ask; man finds a compressed page on every system. Built with corvane itself, so that
# building only that target is enough to install.
add_custom_command(OUTPUT ${docs}/corvane.1.gz ${docs}/changelog.gz
  COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_CURRENT_SOURCE_DIR}/doc/corvane.1 ${docs}/corvane.1
  COMMAND gzip -9nf ${docs}/corvane.1
  COMMAND ${CMAKE_COMMAND} -E copy ${docs}/changelog ${docs}/changelog.plain
  COMMAND gzip -9nf ${docs}/changelog.plain
  COMMAND ${CMAKE_COMMAND} -E rename ${docs}/changelog.plain.gz ${docs}/changelog.gz
  DEPENDS doc/corvane.1 ${docs}/changelog VERBATIM)
add_custom_target(corvane_docs DEPENDS ${docs}/corvane.1.gz ${docs}/changelog.gz)
add_dependencies(corvane corvane_docs)
install(FILES ${docs}/corvane.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${docs}/copyright ${docs}/changelog.gz DESTINATION ${CMAKE_INSTALL_DOCDIR})

# The three completion scripts share one awk program that reads the rows out of `status --json`.
file(READ completions/targets.awk CORVANE_TARGETS_AWK)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS completions/targets.awk)
string(STRIP "${CORVANE_TARGETS_AWK}" CORVANE_TARGETS_AWK)
set(completions ${CMAKE_CURRENT_BINARY_DIR}/completions)
configure_file(completions/corvane.bash.in ${completions}/corvane @ONLY)
configure_file(completions/_corvane.in ${completions}/_corvane @ONLY)
configure_file(completions/corvane.fish.in ${completions}/corvane.fish @ONLY)
install(FILES ${completions}/corvane DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
# zsh looks in share/zsh/site-functions of its own prefix (Homebrew's, /usr/local), but Debian's zsh looks
# for what a package in /usr installs in vendor-completions. Decided when installing, since the Debian
# package is laid out under /usr while the build was configured for /usr/local.
install(CODE "set(corvane_zsh_completion \"${completions}/_corvane\")")
install(CODE [[
  set(dir "${CMAKE_INSTALL_PREFIX}/share/zsh/site-functions")
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(dir "/usr/share/zsh/vendor-completions")
  endif()
  file(INSTALL "${corvane_zsh_completion}" DESTINATION "${dir}")
]])
install(FILES ${completions}/corvane.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_VENDOR "The corvane authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "your dev stack and its RAM, from the command line")
# The extended description below the summary, in lines Debian's tools show without wrapping (80 columns at
# most).
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "corvane shows the running dev stack (emulators, Gradle and Kotlin daemons,
Docker containers, databases, tunnels, dev servers, coding-agent sessions) with
the memory, ports and launcher of each, stops parts of it politely, and serves
the same to coding agents over MCP.")
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_CURRENT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
# Depends is worked out by dpkg-shlibdeps from the libraries the binary links, and libcurl added: it is
# loaded only when a container engine is asked, so the binary does not link it.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libcurl4")
include(CPack)
