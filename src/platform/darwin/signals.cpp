#ifdef __APPLE__

#include "platform/signals.h"

namespace corvane::platform {

// Apple's own programs and daemons, which System Integrity Protection guards besides.
const std::vector<std::string_view>& systemLocations() {
  static const std::vector<std::string_view> locations = {"/System/", "/usr/libexec/", "/sbin/"};
  return locations;
}

std::string_view systemName() { return "macOS"; }

}  // namespace corvane::platform

#endif  // __APPLE__
