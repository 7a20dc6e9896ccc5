#include "platform/paths.h"
#include "platform/posix/home_directory.h"

#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace corvane::platform {

std::string applicationSupportDirectory() {
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data && *data == '/') return data;
  return homeDirectory() + "/.local/share";
}

// Linux keeps a user's home only in the password database (login programs set HOME from it), so a user
// it doesn't list has no home of its own: "/" stands for none, where the walk for a project's folder ends
// anyway.
std::string os::homeWithoutPasswordEntry() { return "/"; }

std::string ownExecutablePath() {
  char buffer[PATH_MAX];
  ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer);
  if (n <= 0) return {};
  return std::string(buffer, static_cast<size_t>(n));
}

}  // namespace corvane::platform
