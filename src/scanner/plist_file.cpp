#include "scanner/plist_file.h"

#include <cstdlib>
#include <fstream>
#include <memory>
#include <plist/plist.h>

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
  plist_t root = nullptr;
  plist_from_memory(contents->data(), static_cast<uint32_t>(contents->size()), &root);
  const std::unique_ptr<void, void (*)(plist_t)> owned(root, plist_free);
  if (!root || plist_get_node_type(root) != PLIST_DICT) return std::nullopt;
  plist_t value = plist_dict_get_item(root, key.c_str());
  if (!value || plist_get_node_type(value) != PLIST_STRING) return std::nullopt;
  char* text = nullptr;
  plist_get_string_val(value, &text);
  if (!text) return std::nullopt;
  std::string result(text);
  std::free(text);
  return result;
}

}  // namespace corvane
