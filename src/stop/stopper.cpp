#include "stop/stopper.h"

#include <cstring>

#include "platform/signals.h"

namespace corvane::Stopper {

namespace {

constexpr double dockerTimeout = 20;
constexpr double simctlTimeout = 30;
constexpr double adbTimeout = 5;

using platform::ScannedProcess;

bool succeeded(const std::optional<Tools::Output>& output) { return output && output->status == 0; }

// Not knowing whether a process still runs is never taken for its end.
Result unreadable(const Item& item, int error) {
  return Result::failed(item.title + "'s processes couldn't be read: " + std::strerror(error) + ".");
}

Result waitFor(const Item& item, const Owned& owned, double wait) {
  const Wait ended = waitGone(owned.processes, wait);
  switch (ended.state) {
    case Wait::State::gone:
      return Result::stopped();
    case Wait::State::running:
      return Result::stillRunning();
    case Wait::State::unknown:
      return unreadable(item, ended.error);
  }
  return Result::stillRunning();
}

// Nothing to signal: done when the processes have all gone by themselves, else none was ours.
Result nothingToSignal(const Item& item, const Owned& owned) {
  if (owned.allGone) return Result::stopped();
  return Result::failed(item.title + " belongs to the system or another user.");
}

// `docker stop` or `docker kill`: the tool's word is the whole answer, nothing is waited for.
Result dockerCommand(const Stop::Containers& containers, const Tools& tools, const std::string& verb) {
  const std::string* docker = tools.path("docker");
  if (!docker) return Result::failed("docker not found.");
  std::vector<std::string> arguments = {verb};
  arguments.insert(arguments.end(), containers.ids.begin(), containers.ids.end());
  if (succeeded(run(*docker, arguments, dockerTimeout))) return Result::stopped();
  return Result::failed("docker " + verb + " failed.");
}

void signalAll(const Owned& owned, platform::StopSignal signal) {
  for (const ScannedProcess& process : owned.processes) platform::sendSignal(process, signal);
}

Result kill(const Item& item, const Owned& owned, const Tools& tools, double wait) {
  if (const auto* containers = item.stop->as<Stop::Containers>()) return dockerCommand(*containers, tools, "kill");
  if (owned.processes.empty()) return nothingToSignal(item, owned);
  signalAll(owned, platform::StopSignal::kill);
  return waitFor(item, owned, wait);
}

Result shutDownSimulator(const Item& item, const Stop::Simulator& simulator, const Owned& owned,
                         const Tools& tools, double wait) {
  const std::string* xcrun = tools.path("xcrun");
  if (!xcrun) return Result::failed("xcrun not found.");
  std::vector<std::string> arguments = {"simctl"};
  if (simulator.previews) arguments.insert(arguments.end(), {"--set", "previews"});
  arguments.insert(arguments.end(), {"shutdown", simulator.udid});
  if (!succeeded(run(*xcrun, arguments, simctlTimeout)))
    return Result::failed("simctl couldn't shut down " + item.title + ".");
  return waitFor(item, owned, wait);
}

// adb asks the emulator to quit; when that can't be done the emulator gets SIGTERM like any process.
Result stopEmulator(const Item& item, const Stop::Emulator& emulator, const Owned& owned, const Tools& tools,
                    double wait) {
  const std::string* adb = tools.path("adb");
  const bool asked =
      adb && emulator.serial && succeeded(run(*adb, {"-s", *emulator.serial, "emu", "kill"}, adbTimeout));
  if (!asked) signalAll(owned, platform::StopSignal::terminate);
  return waitFor(item, owned, wait);
}

Result terminate(const Item& item, const Owned& owned, double wait) {
  if (owned.processes.empty()) return nothingToSignal(item, owned);
  bool delivered = false;
  for (const ScannedProcess& process : owned.processes)
    if (platform::sendSignal(process, platform::StopSignal::terminate) != platform::SignalResult::notPermitted)
      delivered = true;
  if (!delivered)
    return Result::failed(std::string(platform::systemName()) + " doesn't let this version stop " + item.title +
                          ". Stop it in Terminal.");
  return waitFor(item, owned, wait);
}

}  // namespace

Result stop(const Item& item, const StartTimes& started, const Tools& tools, bool force, double wait) {
  if (!item.stop) return Result::failed(item.title + " isn't stopped by Corvane.");
  const Owned owned = ownedProcesses(item, started);
  if (owned.unreadable != 0) return unreadable(item, owned.unreadable);
  if (force) return kill(item, owned, tools, wait);
  if (const auto* simulator = item.stop->as<Stop::Simulator>())
    return shutDownSimulator(item, *simulator, owned, tools, wait);
  if (const auto* emulator = item.stop->as<Stop::Emulator>()) return stopEmulator(item, *emulator, owned, tools, wait);
  if (const auto* containers = item.stop->as<Stop::Containers>()) return dockerCommand(*containers, tools, "stop");
  return terminate(item, owned, wait);
}

}  // namespace corvane::Stopper
