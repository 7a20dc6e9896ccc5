// Xcode's helper services: the source index and the build services.
#include <vector>
#include <array>
#include <string>

#include "detect/classifiers.h"
#include "detect/tables.h"
#include "detect/text.h"

namespace corvane {

namespace {

constexpr std::array<std::string_view, 3> xcodeServices = {"SourceKitService", "XCBBuildService",
                                                           "SWBBuildService"};

}  // namespace

void addXcodeServices(Detection& d) {
  // One walk finds both the services and whether Xcode runs; the rows are made after it.
  bool xcodeRuns = false;
  std::vector<const Proc*> services;
  for (const Proc* p : d.all) {
    if (p->name == "Xcode" && contains(p->path, ".app/Contents/MacOS/")) xcodeRuns = true;
    if (!d.isClaimed(p->pid) && contains(xcodeServices, p->name)) services.push_back(p);
  }
  // Xcode starts its services again at once while it runs, so stopping them then needs care.
  const Detection::Guard guard = xcodeRuns ? Detection::Guard::guarded : Detection::Guard::none;
  for (const Proc* p : services) {
    if (d.isClaimed(p->pid)) continue;
    d.add(Item::Kind::xcode, "xcode:" + std::to_string(p->pid), "xcode:" + p->name, p->name, p->pid, std::nullopt,
          Stop::signal(), guard);
  }
}

}  // namespace corvane
