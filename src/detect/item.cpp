#include "detect/item.h"

#include "base/json_fields.h"

namespace corvane {

using nlohmann::json;

namespace {

constexpr std::string_view avdPrefix = "avd:";

constexpr bool inEnumerationOrder() {
  for (size_t i = 0; i < kindNames.size(); ++i)
    if (static_cast<size_t>(kindNames[i].kind) != i) return false;
  return true;
}
// rawValue looks a kind up by its number.
static_assert(inEnumerationOrder());

}  // namespace

std::string_view rawValue(Item::Kind kind) { return kindNames[static_cast<size_t>(kind)].name; }

std::optional<Item::Kind> kindFromRawValue(std::string_view raw) {
  for (const auto& [kind, name] : kindNames)
    if (name == raw) return kind;
  return std::nullopt;
}

std::string avdKey(std::string_view avdName) { return std::string(avdPrefix) + std::string(avdName); }

std::optional<std::string> avdNameFromKey(std::string_view key) {
  if (!key.starts_with(avdPrefix)) return std::nullopt;
  return std::string(key.substr(avdPrefix.size()));
}

json toJSON(const Stop& stop) {
  struct Encoder {
    json operator()(const Stop::Simulator& s) const {
      return {{"simulator", {{"udid", s.udid}, {"previews", s.previews}}}};
    }
    json operator()(const Stop::Emulator& e) const {
      json payload = json::object();
      if (e.serial) payload["serial"] = *e.serial;
      return {{"emulator", payload}};
    }
    json operator()(const Stop::Containers& c) const { return {{"containers", {{"_0", c.ids}}}}; }
    json operator()(const Stop::Signal&) const { return {{"signal", json::object()}}; }
  };
  return std::visit(Encoder{}, stop.method);
}

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

json toJSON(const Item& item) {
  json j = {{"id", item.id},
            {"key", item.key},
            {"kind", rawValue(item.kind)},
            {"title", item.title},
            {"pids", item.pids},
            {"memory", item.memory},
            {"counted", item.counted},
            {"ports", item.ports},
            {"inbound", item.inbound},
            {"guarded", item.guarded},
            {"cpuTime", item.cpuTimeNanoseconds},
            {"cpu", item.cpuCores},
            {"building", item.building}};
  if (item.cwd) j["cwd"] = *item.cwd;
  if (item.project) j["project"] = *item.project;
  if (item.startedBy) j["startedBy"] = *item.startedBy;
  if (item.agentPID) j["agentPID"] = *item.agentPID;
  if (item.started) j["started"] = iso8601WholeSeconds(*item.started);
  if (item.stop) j["stop"] = toJSON(*item.stop);
  if (item.idleSince) j["idleSince"] = iso8601WholeSeconds(*item.idleSince);
  return j;
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

json toJSON(const Container& c) {
  json j = {{"id", c.id}, {"name", c.name}, {"image", c.image}, {"memory", c.memory}};
  if (c.project) j["project"] = *c.project;
  return j;
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
