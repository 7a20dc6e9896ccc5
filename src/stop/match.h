#pragma once
// Which rows a `stop` target names: an id, else a port, else a project.
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "detect/item.h"

namespace corvane {

struct Match {
  std::vector<Item> items;   // in scan order; empty when nothing matched
  bool byIdOrPort = false;   // a single row picked by name, as opposed to all rows of a project
};

// The first try that finds anything decides: the item whose id equals the target; the first item
// listening on the port the target spells ("3000", ":3000", "+3000"); every item whose project equals
// the whole target, ignoring case and canonically equivalent spellings.
Match match(std::string_view target, const std::vector<Item>& items);

// The port a target spells: one leading ":" dropped, then decimal digits with at most a leading "+",
// from 0 to 65535.
std::optional<uint16_t> portOfTarget(std::string_view target);

}  // namespace corvane
