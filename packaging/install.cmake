# What `cmake --install` lays out, and the Debian package made from it (`cpack -G DEB`).

# Installed binaries are stripped whether or not --strip is given: the debug information stays in the
# build tree. The variable is read by the target's install code that follows.
install(CODE "set(CMAKE_INSTALL_DO_STRIP TRUE)")
install(TARGETS corvane RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES doc/corvane.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The three completion scripts share one awk program that reads the rows out of `status --json`.
file(READ completions/targets.awk CORVANE_TARGETS_AWK)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS completions/targets.awk)
string(STRIP "${CORVANE_TARGETS_AWK}" CORVANE_TARGETS_AWK)
set(completions ${CMAKE_CURRENT_BINARY_DIR}/completions)
configure_file(completions/corvane.bash.in ${completions}/corvane @ONLY)
configure_file(completions/_corvane.in ${completions}/_corvane @ONLY)
configure_file(completions/corvane.fish.in ${completions}/corvane.fish @ONLY)
install(FILES ${completions}/corvane DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${completions}/_corvane DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES ${completions}/corvane.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_VENDOR "The corvane authors")
set(CPACK_PACKAGE_CONTACT "The corvane authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "your dev stack and its RAM, from the command line")
set(CPACK_PACKAGE_DESCRIPTION
    "Shows the running dev stack (emulators, Gradle and Kotlin daemons, Docker containers, databases, tunnels, dev servers, coding-agent sessions) with memory, ports and who started each, stops parts of it politely, and serves the same to coding agents over MCP.")
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
