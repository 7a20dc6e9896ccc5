#pragma once
// The text of `corvane status`: a header, then the rows grouped by project or kind.
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "detect/item.h"
#include "snapshot/memory.h"

namespace corvane {

// The heading of a row that has no project.
std::string_view groupName(Item::Kind kind);

struct StatusHeader {
  uint64_t devStack = 0;  // bytes of the counted rows
  Pressure pressure = Pressure::normal;
  uint64_t swapUsed = 0;
  double scanSeconds = 0;
};

std::string headerLine(const StatusHeader& header);
std::string rowLine(const Item& item, bool pinned);

// The whole report, each line ending in a line feed: header, empty line, groups.
std::string statusText(const std::vector<Item>& items, const std::map<std::string, std::string>& pins,
                       Pressure pressure, uint64_t swapUsed, double scanSeconds);

}  // namespace corvane
