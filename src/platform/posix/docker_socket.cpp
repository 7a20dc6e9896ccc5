#include "platform/docker_socket.h"

#include <cstdlib>
#include <string_view>
#include <sys/stat.h>
#include <vector>

#include "platform/paths.h"

namespace corvane::platform {

namespace {

constexpr std::string_view unixScheme = "unix://";

bool isSocket(const std::string& path) {
  struct stat info;
  return !path.empty() && stat(path.c_str(), &info) == 0 && S_ISSOCK(info.st_mode);
}

std::string runtimeDirectory() {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  return runtime && *runtime ? std::string(runtime) : std::string();
}

// Docker's own places, where an engine's root daemon listens.
std::vector<std::string> dockerPlaces() {
  std::vector<std::string> places;
  if (const std::string runtime = runtimeDirectory(); !runtime.empty()) places.push_back(runtime + "/docker.sock");
  places.push_back("/var/run/docker.sock");
  return places;
}

// The socket a unix:// DOCKER_HOST names; absent when it names none or something else.
std::optional<std::string> hostSocket(std::string_view host) {
  if (!host.starts_with(unixScheme)) return std::nullopt;
  std::string path(host.substr(unixScheme.size()));
  if (!isSocket(path)) return std::nullopt;
  return path;
}

std::optional<std::string> firstSocket(const std::vector<std::string>& places) {
  for (const auto& place : places)
    if (isSocket(place)) return place;
  return std::nullopt;
}

}  // namespace

std::optional<std::string> dockerEngineSocket() {
  if (const char* host = std::getenv("DOCKER_HOST"); host && *host) return hostSocket(host);
  std::vector<std::string> places = dockerPlaces();
#ifdef __APPLE__
  const std::string& home = homeDirectory();
  for (const char* place : {"/.docker/run/docker.sock", "/.colima/default/docker.sock", "/.orbstack/run/docker.sock"})
    places.push_back(home + place);
#endif
  if (const std::string runtime = runtimeDirectory(); !runtime.empty())
    places.push_back(runtime + "/podman/podman.sock");
  return firstSocket(places);
}

bool dockerSocketExists() {
#ifdef __APPLE__
  return false;
#else
  if (const char* host = std::getenv("DOCKER_HOST"); host && hostSocket(host)) return true;
  return firstSocket(dockerPlaces()).has_value();
#endif
}

}  // namespace corvane::platform
