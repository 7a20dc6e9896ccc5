#include "scanner/plist_file.h"

#include <fstream>

#include "platform/property_list.h"

namespace corvane {

namespace {

// These files are a few kilobytes; anything far larger is not one.
constexpr std::streamsize maxPlistBytes = 16 * 1024 * 1024;

std::optional<std::string> readSmallFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::string contents;
  char buffer[8192];
  while (file.read(buffer, sizeof buffer) || file.gcount() > 0) {
    contents.append(buffer, static_cast<size_t>(file.gcount()));
    if (static_cast<std::streamsize>(contents.size()) > maxPlistBytes) return std::nullopt;
  }
  if (file.bad()) return std::nullopt;
  return contents;
}

}  // namespace

std::optional<std::string> plistStringValue(const std::string& path, const std::string& key) {
  const auto contents = readSmallFile(path);
  if (!contents) return std::nullopt;
  const auto root = platform::parsePlistDictionary(*contents);
  if (!root) return std::nullopt;
  return platform::plistString(plist_dict_get_item(root.get(), key.c_str()));
}

}  // namespace corvane
