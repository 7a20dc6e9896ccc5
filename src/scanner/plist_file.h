#pragma once
// Reading one string entry of a property-list file (binary or XML): device.plist, Info.plist.
#include <optional>
#include <string>

namespace corvane {

// The string under `key` of the dictionary at the top of the file; absent on any failure.
std::optional<std::string> plistStringValue(const std::string& path, const std::string& key);

}  // namespace corvane
