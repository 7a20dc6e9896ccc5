#include "platform/property_list.h"

#include <cstdint>
#include <cstdlib>
#include <limits>

#include "platform/files.h"

namespace corvane::platform {

namespace {

uint64_t readBigEndian(const unsigned char* bytes, size_t width) {
  uint64_t value = 0;
  for (size_t i = 0; i < width; ++i) value = value << 8 | bytes[i];
  return value;
}

// Walks every object of a binary list's offset table and refuses the list when a string (ASCII or
// UTF-16) holds a NUL character, or when the table points outside the objects. Stricter than
// libplist about the table, which only makes more broken files unreadable.
bool binaryStringsAreWhole(std::string_view bytes) {
  constexpr size_t headerSize = 8;
  constexpr size_t trailerSize = 32;
  if (bytes.size() < headerSize + trailerSize) return false;
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  const size_t end = bytes.size() - trailerSize;
  const unsigned char* trailer = data + end;
  const size_t offsetWidth = trailer[6];
  const uint64_t count = readBigEndian(trailer + 8, 8);
  const uint64_t table = readBigEndian(trailer + 24, 8);
  if (offsetWidth < 1 || offsetWidth > 8 || table > end || count > (end - table) / offsetWidth) return false;
  for (uint64_t i = 0; i < count; ++i) {
    const uint64_t at = readBigEndian(data + table + i * offsetWidth, offsetWidth);
    if (at >= end) return false;
    const unsigned type = data[at] >> 4;
    if (type != 0x5 && type != 0x6) continue;
    uint64_t length = data[at] & 0x0F;
    uint64_t position = at + 1;
    if (length == 0x0F) {
      if (position >= end || data[position] >> 4 != 0x1 || (data[position] & 0x0F) > 3) return false;
      const size_t width = size_t{1} << (data[position] & 0x0F);
      if (width > end - position - 1) return false;
      length = readBigEndian(data + position + 1, width);
      position += 1 + width;
    }
    const uint64_t unit = type == 0x5 ? 1 : 2;
    if (length > (end - position) / unit) return false;
    for (uint64_t k = 0; k < length; ++k) {
      const unsigned char* character = data + position + k * unit;
      if (character[0] == 0 && (unit == 1 || character[1] == 0)) return false;
    }
  }
  return true;
}

bool bytesAreWhole(std::string_view bytes) {
  constexpr std::string_view binaryMagic = "bplist00";
  if (bytes.starts_with(binaryMagic)) return binaryStringsAreWhole(bytes);
  // XML has no NUL character at all.
  return bytes.find('\0') == std::string_view::npos;
}

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
  if (bytes.size() > std::numeric_limits<uint32_t>::max() || !bytesAreWhole(bytes)) return nullptr;
  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
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
  // These files are a few kilobytes; anything far larger is not one.
  constexpr size_t maxPlistBytes = 16 * 1024 * 1024;
  const auto contents = readFile(path, maxPlistBytes);
  if (!contents) return std::nullopt;
  const auto root = parsePlistDictionary(*contents);
  if (!root) return std::nullopt;
  return plistString(plist_dict_get_item(root.get(), key.c_str()));
}

}  // namespace corvane::platform
