#ifdef __APPLE__

#include "platform/paths.h"
#include "platform/posix/home_directory.h"

#include <CoreFoundation/CoreFoundation.h>
#include <climits>
#include <libproc.h>
#include <unistd.h>

namespace corvane::platform {

std::string applicationSupportDirectory() { return homeDirectory() + "/Library/Application Support"; }

// The home NSHomeDirectory gives, which CoreFoundation works out for the current user.
std::string os::homeWithoutPasswordEntry() {
  std::string home = "/";
  if (CFURLRef url = CFCopyHomeDirectoryURL()) {
    UInt8 path[PATH_MAX] = {};
    if (CFURLGetFileSystemRepresentation(url, true, path, sizeof path)) home = reinterpret_cast<const char*>(path);
    CFRelease(url);
  }
  return home;
}

std::string ownExecutablePath() {
  char buffer[4096] = {};
  if (proc_pidpath(getpid(), buffer, sizeof buffer) <= 0) return {};
  size_t length = 0;
  while (length < sizeof buffer && buffer[length] != '\0') ++length;
  return std::string(buffer, length);
}

}  // namespace corvane::platform

#endif  // __APPLE__
