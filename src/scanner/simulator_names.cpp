#include "scanner/simulator_names.h"

#include "platform/property_list.h"

namespace corvane {

std::optional<std::string> simulatorName(const std::string& path, const std::string& udid) {
  const std::string marker = "/" + udid + "/";
  const size_t at = path.find(marker);
  if (at == std::string::npos) return std::nullopt;
  return platform::plistStringValue(path.substr(0, at + marker.size()) + "device.plist", "name");
}

}  // namespace corvane
