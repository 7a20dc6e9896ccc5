#pragma once
// The name the user gave an iOS simulator device, from the device's own directory.
#include <optional>
#include <string>

namespace corvane {

// `path` lies inside the device's directory, which is named by `udid`; the name is the "name" entry
// of that directory's device.plist (binary or XML). Absent on any failure.
std::optional<std::string> simulatorName(const std::string& path, const std::string& udid);

}  // namespace corvane
