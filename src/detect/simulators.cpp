// Booted iOS simulator devices (Xcode's preview devices among them) and the Simulator application.
#include <string>

#include "base/uuid_shape.h"
#include "detect/classifiers.h"
#include "detect/pipeline.h"
#include "detect/text.h"

namespace corvane {

namespace {

// An upper-case UUID between two slashes at `at`, the first slash included.
bool udidAt(std::string_view text, size_t at) {
  if (text.size() - at < 38 || text[at] != '/' || text[at + 37] != '/') return false;
  return isUUIDShape(text.substr(at + 1, 36), HexLetters::upperCase);
}

}  // namespace

std::optional<std::string> simulatorUDID(std::string_view argument) {
  for (size_t at = argument.find('/'); at != std::string_view::npos; at = argument.find('/', at + 1))
    if (udidAt(argument, at)) return std::string(argument.substr(at + 1, 36));
  return std::nullopt;
}

void addSimulators(Detection& d) {
  // Nothing can be claimed before this step, so there is no claimed test.
  for (const Proc* p : d.all) {
    if (p->name != "launchd_sim" || p->args.size() < 2) continue;
    const auto udid = simulatorUDID(p->args[1]);
    if (!udid) continue;
    const bool previews = contains(p->args[1], "/Previews/");
    const auto known = d.world.simulators.find(*udid);
    const std::string name = known == d.world.simulators.end() ? "Simulator" : known->second;
    const std::string title = previews ? "Xcode Previews · " + name : name;
    d.add(Item::Kind::simulator, "sim:" + *udid, "sim:" + *udid, title, p->pid, std::nullopt,
          Stop::simulator(*udid, previews), Detection::Guard::none);
  }
}

void addSimulatorApps(Detection& d) {
  for (const Proc* p : d.all) {
    if (!p->path.ends_with("/Simulator.app/Contents/MacOS/Simulator")) continue;
    d.add(Item::Kind::simulatorApp, "simapp:" + std::to_string(p->pid), "simulator-app", "Simulator app", p->pid,
          std::nullopt, Stop::signal(), Detection::Guard::none);
  }
}

}  // namespace corvane
