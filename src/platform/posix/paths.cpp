#include "platform/paths.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#ifdef __APPLE__
#include <CoreFoundation/CoreFoundation.h>
#include <libproc.h>
#endif

namespace corvane::platform {

namespace {

struct SystemLocation {
  std::string_view prefix;
  bool socketsRead;
};

// Apple's own programs and daemons (which System Integrity Protection guards besides), and the
// system daemons of either system.
constexpr std::array<SystemLocation, 5> systemLocations = {{
    {"/System/", false},
    {"/usr/libexec/", false},
    {"/sbin/", true},
    {"/usr/sbin/", true},
    {"/Library/Apple/", true},
}};

const SystemLocation* systemLocationOf(std::string_view path) {
  for (const auto& location : systemLocations)
    if (path.starts_with(location.prefix)) return &location;
  return nullptr;
}

#ifdef __APPLE__

// The home NSHomeDirectory gives, which CoreFoundation works out for the current user.
std::string homeWithoutPasswordEntry() {
  std::string home = "/";
  if (CFURLRef url = CFCopyHomeDirectoryURL()) {
    UInt8 path[PATH_MAX] = {};
    if (CFURLGetFileSystemRepresentation(url, true, path, sizeof path)) home = reinterpret_cast<const char*>(path);
    CFRelease(url);
  }
  return home;
}

#else

// Linux keeps a user's home only in the password database (login programs set HOME from it), so a user
// it doesn't list has no home of its own: "/" stands for none, where the walk for a project's folder ends
// anyway.
std::string homeWithoutPasswordEntry() { return "/"; }

#endif

}  // namespace

bool isSystemProgram(std::string_view path) { return systemLocationOf(path) != nullptr; }

bool socketsWanted(std::string_view path) {
  const SystemLocation* location = systemLocationOf(path);
  return !location || location->socketsRead;
}

const std::string& homeDirectory() {
  static const std::string home = [] {
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir && *entry->pw_dir)
      return std::string(entry->pw_dir);
    return homeWithoutPasswordEntry();
  }();
  return home;
}

std::string temporaryDirectory() {
  const char* tmp = std::getenv("TMPDIR");
  std::string dir = tmp && *tmp ? tmp : "/tmp";
  while (dir.size() > 1 && dir.back() == '/') dir.pop_back();
  return dir;
}

bool isExecutableFile(const std::string& path) {
  struct stat info;
  if (path.empty() || stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  return access(path.c_str(), X_OK) == 0;
}

#ifdef __APPLE__

std::string applicationSupportDirectory() { return homeDirectory() + "/Library/Application Support"; }

std::string ownExecutablePath() {
  char buffer[4096] = {};
  if (proc_pidpath(getpid(), buffer, sizeof buffer) <= 0) return {};
  size_t length = 0;
  while (length < sizeof buffer && buffer[length] != '\0') ++length;
  return std::string(buffer, length);
}

#else

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

#endif

}  // namespace corvane::platform
