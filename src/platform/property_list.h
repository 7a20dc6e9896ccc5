#pragma once
// Property lists (binary or XML) read with libplist. Bytes that would stop, crash or exhaust libplist
// (NUL characters in strings, deep nesting, trees that expand past memory) are refused before it parses
// them, so that a corrupt file of another program is only unreadable.
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <plist/plist.h>

namespace corvane::platform {

struct PlistFree {
  void operator()(void* node) const { plist_free(static_cast<plist_t>(node)); }
};
using PlistTree = std::unique_ptr<void, PlistFree>;

// Settings files, device.plist and Info.plist are a few kilobytes; anything far larger is not one.
constexpr size_t maxPlistBytes = 4 * 1024 * 1024;

// The list when its top is a dictionary; null for any other list and for bytes that are refused.
PlistTree parsePlistDictionary(std::string_view bytes);

// The text of a string node; absent for any other node.
std::optional<std::string> plistString(plist_t node);

// The string under `key` of the dictionary at the top of a property-list file (device.plist, Info.plist);
// absent on any failure.
std::optional<std::string> plistStringValue(const std::string& path, const std::string& key);

// True when writing `root` as XML and reading that back gives exactly the same values. It does not
// for fractions of a second in dates and for UIDs.
bool plistSurvivesXML(plist_t root);

}  // namespace corvane::platform
