// Which bytes may be handed to libplist at all. libplist stops the whole program on a string or key that
// holds a NUL character, silently cuts such a string short in a binary list, recurses once per level of
// nesting (a few thousand levels overflow the stack) and, in a binary list, builds a new node for every
// reference, so a few kilobytes that refer to the same arrays over and over expand past any memory.
// Lists that could do any of that are refused here, before libplist sees them.
#include "platform/property_list.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "platform/files.h"

namespace corvane::platform {

namespace {

enum class PlistForm { binary, xml };


// Far beyond what any settings file, device.plist or Info.plist holds, and far within what libplist's
// recursion and this program's memory take.
constexpr size_t maxDepth = 100;
constexpr size_t maxNodes = 200'000;

uint64_t readBigEndian(const unsigned char* bytes, size_t width) {
  uint64_t value = 0;
  for (size_t i = 0; i < width; ++i) value = value << 8 | bytes[i];
  return value;
}

// A binary list: objects, then a table of their offsets, then a 32-byte trailer that says how wide the
// offsets and the references between objects are, how many objects there are and which is the top.
struct BinaryList {
  const unsigned char* data = nullptr;
  size_t end = 0;  // where the trailer starts; every object lies before it
  size_t offsetWidth = 0;
  size_t referenceWidth = 0;
  uint64_t count = 0;
  uint64_t top = 0;
  uint64_t table = 0;
};

std::optional<BinaryList> binaryList(std::string_view bytes) {
  constexpr size_t headerSize = 8;
  constexpr size_t trailerSize = 32;
  if (bytes.size() < headerSize + trailerSize) return std::nullopt;
  BinaryList list;
  list.data = reinterpret_cast<const unsigned char*>(bytes.data());
  list.end = bytes.size() - trailerSize;
  const unsigned char* trailer = list.data + list.end;
  list.offsetWidth = trailer[6];
  list.referenceWidth = trailer[7];
  list.count = readBigEndian(trailer + 8, 8);
  list.top = readBigEndian(trailer + 16, 8);
  list.table = readBigEndian(trailer + 24, 8);
  const auto widthIsValid = [](size_t width) { return width >= 1 && width <= 8; };
  if (!widthIsValid(list.offsetWidth) || !widthIsValid(list.referenceWidth) || list.table > list.end ||
      list.count > (list.end - list.table) / list.offsetWidth || list.top >= list.count)
    return std::nullopt;
  return list;
}

// Where object `index` starts, when that is before the trailer.
std::optional<uint64_t> objectOffset(const BinaryList& list, uint64_t index) {
  const uint64_t at = readBigEndian(list.data + list.table + index * list.offsetWidth, list.offsetWidth);
  if (at >= list.end) return std::nullopt;
  return at;
}

// An object's type (the high half of its marker), the length its marker gives and where its contents
// start. For data, strings and collections a length of 15 means the length follows as an integer object.
struct ObjectHead {
  unsigned type = 0;
  uint64_t length = 0;
  uint64_t contents = 0;
};

std::optional<ObjectHead> objectHead(const BinaryList& list, uint64_t at) {
  ObjectHead head{static_cast<unsigned>(list.data[at] >> 4), list.data[at] & 0x0Fu, at + 1};
  const bool extensible = (head.type >= 0x4 && head.type <= 0x6) || (head.type >= 0xA && head.type <= 0xD);
  if (head.length != 0x0F || !extensible) return head;
  const uint64_t position = head.contents;
  if (position >= list.end || list.data[position] >> 4 != 0x1 || (list.data[position] & 0x0F) > 3) return std::nullopt;
  const size_t width = size_t{1} << (list.data[position] & 0x0F);
  if (width > list.end - position - 1) return std::nullopt;
  head.length = readBigEndian(list.data + position + 1, width);
  head.contents = position + 1 + width;
  return head;
}

// Refuses the list when a string (ASCII or UTF-16) of any object holds a NUL character, or the offset
// table points outside the objects. Stricter than libplist about the table, which only makes more broken
// files unreadable.
bool binaryStringsAreWhole(const BinaryList& list) {
  for (uint64_t i = 0; i < list.count; ++i) {
    const auto at = objectOffset(list, i);
    if (!at) return false;
    const unsigned type = list.data[*at] >> 4;
    if (type != 0x5 && type != 0x6) continue;
    const auto head = objectHead(list, *at);
    if (!head) return false;
    const uint64_t unit = type == 0x5 ? 1 : 2;
    if (head->length > (list.end - head->contents) / unit) return false;
    for (uint64_t k = 0; k < head->length; ++k) {
      const unsigned char* character = list.data + head->contents + k * unit;
      if (character[0] == 0 && (unit == 1 || character[1] == 0)) return false;
    }
  }
  return true;
}

// Walks the tree libplist would build from the top object, counting each reference as the new node
// libplist makes of it, and refuses it when it is deeper or larger than the limits.
bool binaryShapeIsSafe(const BinaryList& list) {
  std::vector<std::pair<uint64_t, size_t>> pending = {{list.top, 1}};  // object, its depth
  size_t nodes = 0;
  while (!pending.empty()) {
    const auto [index, depth] = pending.back();
    pending.pop_back();
    if (++nodes > maxNodes || depth > maxDepth) return false;
    const auto at = objectOffset(list, index);
    if (!at) return false;
    const auto head = objectHead(list, *at);
    if (!head) return false;
    // Arrays, sets and dictionaries hold references; a dictionary one for each key and one for each value.
    if (head->type != 0xA && head->type != 0xB && head->type != 0xC && head->type != 0xD) continue;
    const uint64_t references = head->type == 0xD ? 2 * head->length : head->length;
    if (head->length > maxNodes || references > maxNodes - nodes - pending.size()) return false;
    if (references > (list.end - head->contents) / list.referenceWidth) return false;
    for (uint64_t k = 0; k < references; ++k) {
      const uint64_t child = readBigEndian(list.data + head->contents + k * list.referenceWidth, list.referenceWidth);
      if (child >= list.count) return false;
      pending.emplace_back(child, depth + 1);
    }
  }
  return true;
}

// Counts the elements of an XML list and how deep they nest, passing over what holds no elements:
// comments, processing instructions, CDATA sections and the document type declaration.
bool xmlShapeIsSafe(std::string_view text) {
  size_t depth = 0;
  size_t nodes = 0;
  const auto skipPast = [&text](size_t from, std::string_view end) {
    const size_t found = text.find(end, from);
    return found == std::string_view::npos ? text.size() : found + end.size();
  };
  for (size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at)) {
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("<!--")) {
      at = skipPast(at + 4, "-->");
    } else if (rest.starts_with("<![CDATA[")) {
      at = skipPast(at + 9, "]]>");
    } else if (rest.starts_with("<?")) {
      at = skipPast(at + 2, "?>");
    } else if (rest.starts_with("<!")) {
      const size_t close = text.find('>', at);
      const size_t subset = text.find('[', at);
      at = subset < close ? skipPast(subset, "]") : at + 2;
      at = skipPast(at, ">");
    } else if (rest.starts_with("</")) {
      if (depth > 0) --depth;
      at = skipPast(at + 2, ">");
    } else {
      at = skipPast(at + 1, ">");
      if (++nodes > maxNodes || depth + 1 > maxDepth) return false;
      if (text[at - 1] != '>' || text[at - 2] != '/') ++depth;
    }
  }
  return true;
}

// The form the bytes are in when they are safe to parse; absent when they are refused.
std::optional<PlistForm> screenPlist(std::string_view bytes) {
  constexpr std::string_view binaryMagic = "bplist00";
  if (bytes.starts_with(binaryMagic)) {
    const auto list = binaryList(bytes);
    if (!list || !binaryStringsAreWhole(*list) || !binaryShapeIsSafe(*list)) return std::nullopt;
    return PlistForm::binary;
  }
  // XML has no NUL character at all.
  if (bytes.find('\0') != std::string_view::npos || !xmlShapeIsSafe(bytes)) return std::nullopt;
  return PlistForm::xml;
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
  if (bytes.size() > maxPlistBytes) return nullptr;
  const auto form = screenPlist(bytes);
  if (!form) return nullptr;
  // Parsed in the form that was screened: libplist's own guess also tries forms the screen doesn't know.
  plist_t root = nullptr;
  const auto size = static_cast<uint32_t>(bytes.size());
  if (form == PlistForm::binary)
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
