#include "platform/property_list.h"

#include <cstdint>

#include "platform/files.h"
#include "platform/posix/property_list_screen.h"

namespace corvane::platform {

namespace {

std::optional<std::string> binaryForm(plist_t root) {
  char* bytes = nullptr;
  uint32_t length = 0;
  plist_to_bin(root, &bytes, &length);
  if (!bytes) return std::nullopt;
  std::string form(bytes, length);
  plist_to_bin_free(bytes);
  return form;
}

}  // namespace

PlistTree parsePlistDictionary(std::string_view bytes) {
  if (bytes.size() > maxPlistBytes) return nullptr;
  const auto form = os::screenPlist(bytes);
  if (!form) return nullptr;
  // Parsed in the form that was screened: libplist's own guess also tries forms the screen doesn't know.
  plist_t root = nullptr;
  const auto size = static_cast<uint32_t>(bytes.size());
  if (form == os::PlistForm::binary)
    plist_from_bin(bytes.data(), size, &root);
  else
    plist_from_xml(bytes.data(), size, &root);
  PlistTree owned(root);
  if (!root || plist_get_node_type(root) != PLIST_DICT) return nullptr;
  return owned;
}

std::optional<std::string> plistString(plist_t node) {
  if (!node || plist_get_node_type(node) != PLIST_STRING) return std::nullopt;
  uint64_t length = 0;
  const char* text = plist_get_string_ptr(node, &length);
  if (!text) return std::nullopt;
  std::string value(text, length);
  if (value.find('\0') != std::string::npos) return std::nullopt;
  return value;
}

bool plistSurvivesXML(plist_t root) {
  char* xml = nullptr;
  uint32_t length = 0;
  plist_to_xml(root, &xml, &length);
  if (!xml) return false;
  plist_t back = nullptr;
  plist_from_memory(xml, length, &back);
  plist_to_xml_free(xml);
  const PlistTree owned(back);
  if (!back) return false;
  // The binary form holds every value exactly, so equal forms mean equal lists.
  const auto before = binaryForm(root);
  return before && before == binaryForm(back);
}

std::optional<std::string> plistStringValue(const std::string& path, const std::string& key) {
  const auto contents = readFile(path, maxPlistBytes);
  if (!contents) return std::nullopt;
  const auto root = parsePlistDictionary(*contents);
  if (!root) return std::nullopt;
  return plistString(plist_dict_get_item(root.get(), key.c_str()));
}

}  // namespace corvane::platform
