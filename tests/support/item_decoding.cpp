#include "support/item_decoding.h"

#include "base/json_fields.h"

namespace corvane {

using nlohmann::json;

Decoded<Stop> decodeStop(const json& j) {
  if (!j.is_object()) return Decoded<Stop>::failure("Stop must be a JSON object.");
  if (j.size() != 1) return Decoded<Stop>::failure("Invalid number of keys found, expected one.");
  const std::string name = j.begin().key();
  const json& payload = j.begin().value();
  JSONFields f(payload, "Stop." + name);
  Stop stop;
  if (name == "simulator") {
    stop.method = Stop::Simulator{f.string("udid"), f.boolean("previews")};
  } else if (name == "emulator") {
    stop.method = Stop::Emulator{f.optionalString("serial")};
  } else if (name == "containers") {
    stop.method = Stop::Containers{f.strings("_0")};
  } else if (name == "signal") {
    stop.method = Stop::Signal{};
  } else {
    return Decoded<Stop>::failure("Stop has no case named \"" + name + "\".");
  }
  if (!f.ok()) return Decoded<Stop>::failure(f.error());
  return Decoded<Stop>::success(std::move(stop));
}

Decoded<Item> decodeItem(const json& j) {
  JSONFields f(j, "Item");
  Item item;
  item.id = f.string("id");
  item.key = f.string("key");
  auto kind = f.string("kind");
  if (f.ok()) {
    if (auto k = kindFromRawValue(kind))
      item.kind = *k;
    else
      f.fail("Item: \"" + kind + "\" is not a kind.");
  }
  item.title = f.string("title");
  item.cwd = f.optionalString("cwd");
  item.project = f.optionalString("project");
  item.startedBy = f.optionalString("startedBy");
  item.agentPID = f.optionalInt32("agentPID");
  item.pids = f.int32s("pids");
  item.memory = f.uint64("memory");
  item.counted = f.boolean("counted");
  item.started = f.optionalDate("started");
  item.ports = f.ports("ports");
  item.inbound = f.int64("inbound");
  item.guarded = f.boolean("guarded");
  item.cpuTimeNanoseconds = f.uint64("cpuTime");
  item.cpuCores = f.number("cpu");
  item.building = f.boolean("building");
  item.idleSince = f.optionalDate("idleSince");
  if (f.ok() && f.has("stop")) {
    auto stop = decodeStop(j["stop"]);
    if (!stop) return Decoded<Item>::failure("Item: \"stop\": " + stop.error);
    item.stop = *stop.value;
  }
  if (!f.ok()) return Decoded<Item>::failure(f.error());
  return Decoded<Item>::success(std::move(item));
}

Decoded<Container> decodeContainer(const json& j) {
  JSONFields f(j, "Container");
  Container c;
  c.id = f.string("id");
  c.name = f.string("name");
  c.image = f.string("image");
  c.project = f.optionalString("project");
  c.memory = f.uint64("memory");
  if (!f.ok()) return Decoded<Container>::failure(f.error());
  return Decoded<Container>::success(std::move(c));
}

}  // namespace corvane
