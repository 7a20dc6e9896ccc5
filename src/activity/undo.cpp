#include "activity/undo.h"

#include "base/json_fields.h"
#include "tools/tools.h"

namespace corvane {

using nlohmann::json;

namespace {

constexpr double bootTimeout = 60;
constexpr double openTimeout = 5;
constexpr double dockerStartTimeout = 30;

bool bootSimulator(const Undo::Boot& boot, const Tools& tools) {
  const std::string* xcrun = tools.path("xcrun");
  if (!xcrun) return false;
  const auto booted = run(*xcrun, {"simctl", "boot", boot.udid}, bootTimeout);
  if (!booted || booted->status != 0) return false;
  // The device is back either way; the Simulator window is a courtesy.
  run("/usr/bin/open", {"-a", "Simulator"}, openTimeout);
  return true;
}

bool relaunchEmulator(const Undo::Avd& avd, const Tools& tools) {
  const std::string* emulator = tools.path("emulator");
  return emulator && launchDetached(*emulator, {"-avd", avd.name});
}

bool startContainers(const Undo::Start& start, const Tools& tools) {
  const std::string* docker = tools.path("docker");
  if (!docker) return false;
  std::vector<std::string> arguments = {"start"};
  arguments.insert(arguments.end(), start.ids.begin(), start.ids.end());
  const auto started = run(*docker, arguments, dockerStartTimeout);
  return started && started->status == 0;
}

}  // namespace

bool Undo::perform(const Tools& tools) const {
  if (tools.paths.empty()) return false;
  if (const auto* b = as<Boot>()) return bootSimulator(*b, tools);
  if (const auto* a = as<Avd>()) return relaunchEmulator(*a, tools);
  if (const auto* s = as<Start>()) return startContainers(*s, tools);
  return false;
}

std::optional<Undo> undoFor(const Item& item) {
  if (!item.stop) return std::nullopt;
  if (const auto* simulator = item.stop->as<Stop::Simulator>()) {
    if (simulator->previews) return std::nullopt;  // Xcode makes previews devices on its own
    return Undo::boot(simulator->udid);
  }
  if (item.stop->as<Stop::Emulator>()) {
    const auto name = avdNameFromKey(item.key);
    if (!name) return std::nullopt;
    return Undo::avd(*name);
  }
  if (const auto* containers = item.stop->as<Stop::Containers>()) return Undo::start(containers->ids);
  return std::nullopt;
}

json toJSON(const Undo& undo) {
  struct Encoder {
    json operator()(const Undo::Boot& b) const { return {{"boot", {{"udid", b.udid}}}}; }
    json operator()(const Undo::Avd& a) const { return {{"avd", {{"_0", a.name}}}}; }
    json operator()(const Undo::Start& s) const { return {{"start", {{"_0", s.ids}}}}; }
  };
  return std::visit(Encoder{}, undo.action);
}

Decoded<Undo> decodeUndo(const json& j) {
  if (!j.is_object()) return Decoded<Undo>::failure("Undo must be a JSON object.");
  if (j.size() != 1) return Decoded<Undo>::failure("Invalid number of keys found, expected one.");
  const std::string name = j.begin().key();
  JSONFields f(j.begin().value(), "Undo." + name);
  Undo undo;
  if (name == "boot") {
    undo.action = Undo::Boot{f.string("udid")};
  } else if (name == "avd") {
    undo.action = Undo::Avd{f.string("_0")};
  } else if (name == "start") {
    undo.action = Undo::Start{f.strings("_0")};
  } else {
    return Decoded<Undo>::failure("Undo has no case named \"" + name + "\".");
  }
  if (!f.ok()) return Decoded<Undo>::failure(f.error());
  return Decoded<Undo>::success(std::move(undo));
}

}  // namespace corvane
