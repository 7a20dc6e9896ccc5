#include "platform/signals.h"

namespace corvane::platform {

const std::vector<std::string_view>& systemLocations() {
  static const std::vector<std::string_view> locations = {"/System/", "/usr/libexec/", "/sbin/", "/usr/sbin/"};
  return locations;
}

std::string_view systemName() { return "Linux"; }

}  // namespace corvane::platform
