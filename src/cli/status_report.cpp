#include "cli/status_report.h"

#include <algorithm>

#include "base/gigabytes.h"
#include "base/utf8.h"
#include "snapshot/unicode.h"

namespace corvane {

namespace {

constexpr size_t titleUnits = 34;
constexpr size_t memoryWidth = 8;
constexpr std::string_view dot = " \xC2\xB7 ";  // U+00B7 with a blank on each side

// The title padded with blanks or cut to exactly 34 UTF-16 code units. A character outside the basic
// plane takes two units and is never split: the cut then falls before it and a blank fills the gap.
std::string titleField(const std::string& title) {
  std::string result;
  size_t units = 0;
  for (size_t i = 0; i < title.size();) {
    const DecodedScalar scalar = decodeUTF8(title, i);
    const size_t width = scalar.value > 0xFFFF ? 2 : 1;
    if (units + width > titleUnits) break;
    result.append(title, i, scalar.length);
    units += width;
    i += scalar.length;
  }
  result.append(titleUnits - units, ' ');
  return result;
}

}  // namespace

std::string_view groupName(Item::Kind kind) {
  switch (kind) {
    case Item::Kind::simulator:
    case Item::Kind::simulatorApp: return "Simulators";
    case Item::Kind::emulator: return "Android";
    case Item::Kind::gradle:
    case Item::Kind::kotlin: return "Gradle & Kotlin";
    case Item::Kind::xcode: return "Xcode";
    case Item::Kind::bundler: return "Bundlers";
    case Item::Kind::docker:
    case Item::Kind::container: return "Docker";
    case Item::Kind::database: return "Databases";
    case Item::Kind::tunnel: return "Tunnels";
    case Item::Kind::server: return "Dev servers";
    case Item::Kind::agent: return "Agents";
  }
  return "";
}

std::string headerLine(const StatusHeader& h) {
  std::string line = "Dev stack " + gigabyteText(h.devStack);
  line += std::string(dot) + "pressure " + pressureName(h.pressure);
  line += std::string(dot) + "swap " + gigabyteText(h.swapUsed);
  line += std::string(dot) + "scanned in " + std::to_string(static_cast<int64_t>(h.scanSeconds * 1000)) + " ms";
  return line;
}

std::string rowLine(const Item& item, bool pinned) {
  std::string memory = gigabyteText(item.memory);
  std::string line = "  " + titleField(item.title) + " ";
  if (memory.size() < memoryWidth) line.append(memoryWidth - memory.size(), ' ');
  line += memory + "  " + std::string(rawValue(item.kind));
  if (item.startedBy) line += std::string(dot) + "started by " + *item.startedBy;
  if (pinned) line += std::string(dot) + "pinned";
  if (item.guarded) line += std::string(dot) + "guarded";
  if (!item.stop) line += std::string(dot) + "not stoppable";
  line += std::string(dot) + std::to_string(item.pids.size()) + " proc" + std::string(dot) + item.id;
  return line;
}

std::string statusText(const std::vector<Item>& items, const std::map<std::string, std::string>& pins,
                       Pressure pressure, uint64_t swapUsed, double scanSeconds) {
  StatusHeader header{0, pressure, swapUsed, scanSeconds};
  for (const auto& item : items)
    header.devStack += countedMemory(item);

  // Groups are keyed by the composed form of their name, whose UTF-8 byte order is the order of its
  // Unicode scalars: a folder spelt with a combining accent joins, and sorts as, the one spelt with the
  // precomposed letter. The heading is the spelling of the group's first row.
  struct Group {
    std::string heading;
    std::vector<const Item*> rows;
  };
  std::map<std::string, Group> groups;
  for (const auto& item : items) {
    const std::string name = item.project ? *item.project : std::string(groupName(item.kind));
    Group& group = groups[composedText(name)];
    if (group.rows.empty()) group.heading = name;
    group.rows.push_back(&item);
  }

  std::string text = headerLine(header) + "\n\n";
  for (auto& [key, group] : groups) {
    text += group.heading + "\n";
    std::stable_sort(group.rows.begin(), group.rows.end(),
                     [](const Item* a, const Item* b) { return a->memory > b->memory; });
    for (const Item* item : group.rows) text += rowLine(*item, !pins.empty() && pins.count(item->key) > 0) + "\n";
  }
  return text;
}

}  // namespace corvane
