#include "scanner/simulator_names.h"

#include <cstdlib>
#include <fstream>
#include <memory>
#include <plist/plist.h>

namespace corvane {

namespace {

// device.plist files are a few kilobytes; anything far larger is not one.
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

std::optional<std::string> simulatorName(const std::string& path, const std::string& udid) {
  const std::string marker = "/" + udid + "/";
  const size_t at = path.find(marker);
  if (at == std::string::npos) return std::nullopt;
  const auto contents = readSmallFile(path.substr(0, at + marker.size()) + "device.plist");
  if (!contents) return std::nullopt;

  plist_t root = nullptr;
  plist_from_memory(contents->data(), static_cast<uint32_t>(contents->size()), &root);
  const std::unique_ptr<void, void (*)(plist_t)> owned(root, plist_free);
  if (!root || plist_get_node_type(root) != PLIST_DICT) return std::nullopt;
  plist_t name = plist_dict_get_item(root, "name");
  if (!name || plist_get_node_type(name) != PLIST_STRING) return std::nullopt;
  char* text = nullptr;
  plist_get_string_val(name, &text);
  if (!text) return std::nullopt;
  std::string result(text);
  std::free(text);
  return result;
}

}  // namespace corvane
