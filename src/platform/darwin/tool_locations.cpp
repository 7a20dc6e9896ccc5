#ifdef __APPLE__

#include "platform/tool_locations.h"

#include "platform/paths.h"

namespace corvane::platform {

std::string defaultAndroidSDKRoot() { return homeDirectory() + "/Library/Android/sdk"; }

// Homebrew on Apple silicon, then on Intel (and Docker Desktop's link), OrbStack, Docker Desktop's bundle.
std::vector<std::string> dockerCandidates() {
  return {"/opt/homebrew/bin/docker", "/usr/local/bin/docker", homeDirectory() + "/.orbstack/bin/docker",
          "/Applications/Docker.app/Contents/Resources/bin/docker"};
}

const char* defaultShell() { return "/bin/zsh"; }

}  // namespace corvane::platform

#endif  // __APPLE__
