#include "platform/docker_socket.h"

#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace corvane::platform {

namespace {

bool isSocket(const std::string& path) {
  struct stat info;
  return !path.empty() && stat(path.c_str(), &info) == 0 && S_ISSOCK(info.st_mode);
}

}  // namespace

bool dockerSocketExists() {
  constexpr std::string_view unixScheme = "unix://";
  if (const char* host = std::getenv("DOCKER_HOST"); host) {
    const std::string_view value(host);
    if (value.starts_with(unixScheme) && isSocket(std::string(value.substr(unixScheme.size())))) return true;
  }
  if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && *runtime) {
    if (isSocket(std::string(runtime) + "/docker.sock")) return true;
  }
  return isSocket("/var/run/docker.sock");
}

}  // namespace corvane::platform
