#include "detect/item.h"

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

json toJSON(const Container& c) {
  json j = {{"id", c.id}, {"name", c.name}, {"image", c.image}, {"memory", c.memory}};
  if (c.project) j["project"] = *c.project;
  return j;
}

}  // namespace corvane
