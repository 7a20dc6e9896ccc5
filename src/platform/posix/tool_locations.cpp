#include "platform/tool_locations.h"

#include "platform/paths.h"

namespace corvane::platform {

#ifdef __APPLE__

std::string defaultAndroidSDKRoot() { return homeDirectory() + "/Library/Android/sdk"; }

// Homebrew on Apple silicon, then on Intel (and Docker Desktop's link), OrbStack, Docker Desktop's bundle.
std::vector<std::string> dockerCandidates() {
  return {"/opt/homebrew/bin/docker", "/usr/local/bin/docker", homeDirectory() + "/.orbstack/bin/docker",
          "/Applications/Docker.app/Contents/Resources/bin/docker"};
}

const char* defaultShell() { return "/bin/zsh"; }

#else

std::string defaultAndroidSDKRoot() { return homeDirectory() + "/Android/Sdk"; }

// The distribution's package and Docker's own installer first, then the places a macOS user would
// have, which also cover a home directory shared between the two.
std::vector<std::string> dockerCandidates() {
  return {"/usr/bin/docker",
          "/usr/local/bin/docker",
          "/opt/homebrew/bin/docker",
          homeDirectory() + "/.orbstack/bin/docker",
          "/Applications/Docker.app/Contents/Resources/bin/docker"};
}

const char* defaultShell() { return "/bin/sh"; }

#endif

}  // namespace corvane::platform
