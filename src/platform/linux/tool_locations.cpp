#include "platform/tool_locations.h"

#include "platform/paths.h"

namespace corvane::platform {

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

}  // namespace corvane::platform
