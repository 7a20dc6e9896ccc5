#include "stop/match.h"

#include <algorithm>

#include "snapshot/unicode.h"

namespace corvane {

std::optional<uint16_t> portOfTarget(std::string_view target) {
  if (target.starts_with(':')) target.remove_prefix(1);
  if (target.starts_with('+')) target.remove_prefix(1);
  if (target.empty()) return std::nullopt;
  uint32_t value = 0;
  for (char c : target) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + static_cast<uint32_t>(c - '0');
    if (value > 65535) return std::nullopt;
  }
  return static_cast<uint16_t>(value);
}

Match match(std::string_view target, const std::vector<Item>& items) {
  for (const Item& item : items)
    if (item.id == target) return {{item}, true};

  if (auto port = portOfTarget(target)) {
    for (const Item& item : items)
      if (std::find(item.ports.begin(), item.ports.end(), *port) != item.ports.end()) return {{item}, true};
  }

  // Case and the spelling of accents don't count: "STRASSE" names "straße", and "école" typed with
  // U+00E9 names the folder whose name holds "e" and a combining accent.
  const std::string folded = foldedText(target);
  Match result;
  for (const Item& item : items)
    if (item.project && foldedText(*item.project) == folded) result.items.push_back(item);
  return result;
}

}  // namespace corvane
