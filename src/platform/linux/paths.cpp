#include "platform/paths.h"

#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace corvane::platform {

std::string applicationSupportDirectory() {
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data && *data == '/') return data;
  return homeDirectory() + "/.local/share";
}

std::string ownExecutablePath() {
  char buffer[PATH_MAX];
  ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer);
  if (n <= 0) return {};
  return std::string(buffer, static_cast<size_t>(n));
}

}  // namespace corvane::platform
