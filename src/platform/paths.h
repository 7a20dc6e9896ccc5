#pragma once
// Where things are on this machine.
#include <string>
#include <string_view>

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

// A program of the system's own: never a developer's server, and never signalled whoever owns it.
bool isSystemProgram(std::string_view path);
// False for the system's services whose sockets are not worth asking for; the daemons a package
// manager installs beside them (a distribution's MySQL or nginx) keep their ports.
bool socketsWanted(std::string_view path);

}  // namespace corvane::platform
