#include "activity/activity.h"

#include <cctype>

#include "base/uuid_shape.h"
#include "platform/uuid.h"
#include "base/json_fields.h"

namespace corvane {

using nlohmann::json;

namespace {

// 8-4-4-4-12 hexadecimal digits, either case; returned upper-case as the log writes them.
std::optional<std::string> canonicalUUID(const std::string& text) {
  if (!isUUIDShape(text)) return std::nullopt;
  std::string upper = text;
  for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return upper;
}

}  // namespace

Activity makeActivity(const Item& item, Date date, std::string reason) {
  return Activity{platform::newUUID(), date,       item.title, item.kind, countedMemory(item),
                  std::move(reason),   undoFor(item), false};
}

json toJSON(const Activity& a) {
  json j = {{"id", a.id},
            {"date", secondsSinceReferenceDate(a.date)},
            {"title", a.title},
            {"kind", rawValue(a.kind)},
            {"memory", a.memory},
            {"reason", a.reason},
            {"undone", a.undone}};
  if (a.undo) j["undo"] = toJSON(*a.undo);
  return j;
}

Decoded<Activity> decodeActivity(const json& j) {
  JSONFields f(j, "Activity");
  Activity a;
  const std::string id = f.string("id");
  const double date = f.number("date");
  a.title = f.string("title");
  const std::string kind = f.string("kind");
  a.memory = f.uint64("memory");
  a.reason = f.string("reason");
  a.undone = f.boolean("undone");
  if (!f.ok()) return Decoded<Activity>::failure(f.error());

  auto uuid = canonicalUUID(id);
  if (!uuid) return Decoded<Activity>::failure("Activity: \"" + id + "\" is not a UUID.");
  a.id = *uuid;
  const auto when = dateFromReferenceSeconds(date);
  if (!when) return Decoded<Activity>::failure("Activity: \"date\" is out of range.");
  a.date = *when;
  auto k = kindFromRawValue(kind);
  if (!k) return Decoded<Activity>::failure("Activity: \"" + kind + "\" is not a kind.");
  a.kind = *k;
  if (f.has("undo")) {
    auto undo = decodeUndo(j.at("undo"));
    if (!undo) return Decoded<Activity>::failure("Activity: \"undo\": " + undo.error);
    a.undo = *undo.value;
  }
  return Decoded<Activity>::success(std::move(a));
}

}  // namespace corvane
