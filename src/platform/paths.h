#pragma once
// Where things are on this machine.
#include <string>

namespace corvane::platform {

// The home directory of the real user, from the password database, else the system's own home for the
// current user (never $HOME); read once.
const std::string& homeDirectory();
// The user's Application Support folder: ~/Library/Application Support on macOS,
// $XDG_DATA_HOME or ~/.local/share on Linux.
std::string applicationSupportDirectory();
// $TMPDIR, else /tmp; without a trailing "/".
std::string temporaryDirectory();
// Exists, is a regular file, and the current user may execute it.
bool isExecutableFile(const std::string& path);
// The path of this program's own executable; empty when it can't be read.
std::string ownExecutablePath();

}  // namespace corvane::platform
