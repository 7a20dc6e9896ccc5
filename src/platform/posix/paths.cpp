#include "platform/paths.h"
#include "platform/posix/home_directory.h"

#include <cstdlib>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane::platform {

const std::string& homeDirectory() {
  static const std::string home = [] {
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir && *entry->pw_dir)
      return std::string(entry->pw_dir);
    return os::homeWithoutPasswordEntry();
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

}  // namespace corvane::platform
