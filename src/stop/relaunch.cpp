// The undo of a logged stop: boot the simulator, relaunch the emulator, start the containers again.
#include "activity/undo.h"
#include "tools/tools.h"

namespace corvane {

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

}  // namespace corvane
