#pragma once
// One entry of the activity log: a row this program (or the desktop app) stopped, and how to undo it.
#include <cstdint>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "activity/undo.h"
#include "detect/item.h"
#include "base/date.h"
#include "base/decoded.h"

namespace corvane {

struct Activity {
  std::string id;  // random UUID, upper-case 8-4-4-4-12
  Date date;
  std::string title;
  Item::Kind kind = Item::Kind::server;
  uint64_t memory = 0;  // bytes freed: the row's memory when counted, else 0
  std::string reason;   // who stopped it: "corvane stop", "corvane free", "<agent> via MCP"
  std::optional<Undo> undo;
  bool undone = false;  // only the desktop app sets it

  bool operator==(const Activity&) const = default;
};

// The entry for a row that was stopped at `date` because `reason` asked.
Activity makeActivity(const Item& item, Date date, std::string reason);

// The desktop app's form: "date" in seconds since 2001-01-01 UTC, "undo" left out when there is none.
nlohmann::json toJSON(const Activity& activity);
// Every key but "undo" is required; values of the wrong type, an id that isn't a UUID and an unknown kind fail.
Decoded<Activity> decodeActivity(const nlohmann::json& json);

}  // namespace corvane
