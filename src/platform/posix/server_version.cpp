#include "platform/server_version.h"

#ifdef __APPLE__
#include "platform/paths.h"
#include "platform/property_list.h"
#endif

namespace corvane::platform {

#ifdef __APPLE__

std::string serverVersion() {
  std::string executable = ownExecutablePath();
  if (executable.empty()) return "dev";
  // .../Corvane.app/Contents/MacOS/corvane → .../Corvane.app/Contents/Info.plist
  std::string contents = executable;
  for (int i = 0; i < 2; ++i) {
    auto slash = contents.rfind('/');
    contents = slash == std::string::npos ? std::string() : contents.substr(0, slash);
  }
  auto version = plistStringValue(contents + "/Info.plist", "CFBundleShortVersionString");
  return version ? *version : "dev";
}

#else

std::string serverVersion() {
#ifdef CORVANE_VERSION
  return CORVANE_VERSION[0] ? CORVANE_VERSION : "dev";
#else
  return "dev";
#endif
}

#endif

}  // namespace corvane::platform
