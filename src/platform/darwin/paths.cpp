#ifdef __APPLE__

#include "platform/paths.h"

#include <libproc.h>
#include <unistd.h>

namespace corvane::platform {

std::string applicationSupportDirectory() { return homeDirectory() + "/Library/Application Support"; }

std::string ownExecutablePath() {
  char buffer[4096] = {};
  if (proc_pidpath(getpid(), buffer, sizeof buffer) <= 0) return {};
  size_t length = 0;
  while (length < sizeof buffer && buffer[length] != '\0') ++length;
  return std::string(buffer, length);
}

}  // namespace corvane::platform

#endif  // __APPLE__
