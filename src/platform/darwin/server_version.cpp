#ifdef __APPLE__

#include "platform/server_version.h"

#include "platform/paths.h"
#include "platform/property_list.h"

namespace corvane::platform {

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

}  // namespace corvane::platform

#endif  // __APPLE__
