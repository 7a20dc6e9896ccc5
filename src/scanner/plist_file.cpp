#include "scanner/plist_file.h"

#include "platform/files.h"
#include "platform/property_list.h"

namespace corvane {

namespace {

// These files are a few kilobytes; anything far larger is not one.
constexpr size_t maxPlistBytes = 16 * 1024 * 1024;

}  // namespace

std::optional<std::string> plistStringValue(const std::string& path, const std::string& key) {
  const auto contents = platform::readFile(path, maxPlistBytes);
  if (!contents) return std::nullopt;
  const auto root = platform::parsePlistDictionary(*contents);
  if (!root) return std::nullopt;
  return platform::plistString(plist_dict_get_item(root.get(), key.c_str()));
}

}  // namespace corvane
