// Android emulators: the qemu process that runs an Android virtual device.
#include <algorithm>
#include <string>

#include "detect/classifiers.h"

namespace corvane {

namespace {

// adb names an emulator after its console port, an even port from 5554 to 5682.
std::optional<std::string> consoleSerial(const std::vector<uint16_t>& listening) {
  for (const uint16_t port : listening)
    if (port % 2 == 0 && port >= 5554 && port <= 5682) return "emulator-" + std::to_string(port);
  return std::nullopt;
}

}  // namespace

void addEmulators(Detection& d) {
  for (const Proc* p : d.all) {
    if (!p->name.starts_with("qemu-system-")) continue;
    const auto flag = std::find(p->args.begin(), p->args.end(), "-avd");
    if (flag == p->args.end() || flag + 1 == p->args.end()) continue;
    const std::string& avd = *(flag + 1);
    std::string title = avd;
    std::replace(title.begin(), title.end(), '_', ' ');
    d.add(Item::Kind::emulator, "avd:" + std::to_string(p->pid), avdKey(avd), title, p->pid, std::nullopt,
          Stop::emulator(consoleSerial(p->listening)), Detection::Guard::none);
  }
}

}  // namespace corvane
