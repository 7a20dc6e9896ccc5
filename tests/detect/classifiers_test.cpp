// Rows out of small process tables: the cases that trip each classifier's matching.
#include <tuple>

#include <gmock/gmock.h>

#include "detect/pipeline.h"
#include "detect/world_fixture.h"

namespace corvane {
namespace {

using ::testing::UnorderedElementsAreArray;
using testing::makeProc;
using testing::worldOf;

const std::string project = "/Users/ann/app";
const std::string udid = "0A1B2C3D-4E5F-4061-8293-A4B5C6D7E8F9";
const std::string devices = "/Users/ann/Library/Developer/CoreSimulator/Devices/";
const std::string qemu = "/sdk/emulator/qemu/darwin-aarch64/qemu-system-aarch64";

struct Row {
  std::string id, title;
  std::vector<int32_t> pids;  // the root first, the rest in any order
  uint64_t memory = 0;
};

// The rows of `procs`, checked against `rows` in order.
std::vector<Item> expectRows(const std::vector<Proc>& procs, const std::vector<Row>& rows) {
  const auto items = detect(worldOf(procs));
  EXPECT_EQ(items.size(), rows.size());
  for (size_t i = 0; i < std::min(items.size(), rows.size()); ++i) {
    SCOPED_TRACE(rows[i].id);
    EXPECT_EQ(items[i].id, rows[i].id);
    EXPECT_EQ(items[i].title, rows[i].title);
    EXPECT_THAT(items[i].pids, UnorderedElementsAreArray(rows[i].pids));
    if (!rows[i].pids.empty() && !items[i].pids.empty()) {
      EXPECT_EQ(items[i].pids.front(), rows[i].pids.front());
    }
    EXPECT_EQ(items[i].memory, rows[i].memory);
  }
  return items;
}

Proc withFootprint(Proc p, uint64_t footprint) {
  p.footprint = footprint;
  return p;
}

Proc simulator(int32_t pid, int32_t ppid, const std::string& folder) {
  return makeProc(pid, ppid, "/CoreSimulator.framework/Resources/bin/launchd_sim",
                  {"launchd_sim", folder + "/data/var/run/launchd_bootstrap.plist"});
}

// A device booted twice makes a second, empty row; an emulator's serial comes from an even console port
// (5554 to 5682); engines come in order of name, each with the virtual machines the system holds it
// responsible for, and never another app's.
TEST(DevicesAndEnginesTest, Rows) {
  const std::string vm = "/System/Library/Frameworks/Virtualization.framework/Versions/A/XPCServices/"
                         "com.apple.Virtualization.VirtualMachine.xpc/Contents/MacOS/"
                         "com.apple.Virtualization.VirtualMachine";
  auto utmVM = makeProc(62, 1, vm);
  utmVM.responsible = 70;
  const auto items = expectRows({
      simulator(10, 1, devices + udid), withFootprint(makeProc(11, 10, "/sim/SpringBoard"), 100),
      simulator(12, 10, devices + udid),  // inside the first, which claimed it
      makeProc(30, 1, qemu, {"qemu", "-avd", "A"}, "/", {5037, 5555}),
      makeProc(32, 1, qemu, {"qemu", "-avd", "C"}, "/", {5684}),
      makeProc(33, 1, qemu, {"qemu", "-netdelay", "none"}, "/", {5556}),
      makeProc(50, 1, "/Applications/Docker.app/Contents/MacOS/com.docker.backend"),
      makeProc(61, 1, vm),  // nobody responsible for it
      utmVM, makeProc(70, 1, "/Applications/UTM.app/Contents/MacOS/UTM"),
      makeProc(80, 1, "/Applications/OrbStack.app/Contents/MacOS/OrbStack"),
      makeProc(83, 1, "/opt/docker-desktop/bin/com.docker.backend"),
      makeProc(84, 1, "/opt/homebrew/bin/colima", {"colima", "start"}),
  }, {
      {"sim:" + udid, "Simulator", {10, 12, 11}, 100},
      {"sim:" + udid, "Simulator", {}},
      {"avd:30", "A", {30}},
      {"avd:32", "C", {32}},
      {"docker:Colima", "Colima", {84}},
      {"docker:Docker Desktop", "Docker Desktop", {50, 83}},
      {"docker:OrbStack", "OrbStack", {80}},
  });
  EXPECT_FALSE(items.at(1).started);
  EXPECT_EQ(items.at(2).stop, Stop::emulator(std::nullopt));
  EXPECT_EQ(items.at(3).stop, Stop::emulator(std::nullopt));

  // An engine whose processes another row claimed first still has a row, owning nothing.
  expectRows({makeProc(10, 1, "/sdk/qemu-system-aarch64", {"qemu", "-avd", "P"}),
              withFootprint(makeProc(11, 10, "/Applications/OrbStack.app/Contents/MacOS/helper"), 50)},
             {{"avd:10", "P", {10, 11}, 50}, {"docker:OrbStack", "OrbStack", {}}});
}

// A simulator's device folder must hold an upper-case UUID between slashes; a dev server is a process
// of a project folder, outside the system's folders and any app's bundle, that listens.
TEST(ProjectRowsTest, BundlersAgentsAndServersNamedFromTheCommandLineAndWhatIsNoRow) {
  const std::string node = "/usr/bin/node";
  const std::string flutter = "/Users/ann/flutter/bin/cache/flutter_tools.snapshot";
  std::string lower = udid;
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  const auto items = expectRows({
      makeProc(10, 1, "/flutter/bin/cache/dart-sdk/bin/dart", {"dart", "--packages=x", flutter, "attach"}, project),
      makeProc(11, 1, "/flutter/bin/cache/dartaotruntime", {"dartaotruntime", flutter}, "/b"),
      makeProc(12, 1, "/usr/bin/bun", {"bun", "node_modules/react-native/cli.js", "start"}, "/c"),
      makeProc(13, 1, "/usr/bin/python3", {"python3", "react-native", "start"}, "/e"),
      makeProc(14, 1, node, {"node", "react-native", "bundle"}, "/f"),
      // A bundler's title shows the port of its tree, which starts at the package manager.
      makeProc(20, 19, node, {"npm exec expo start"}, "/m"),
      makeProc(21, 20, node, {"node", "/m/node_modules/.bin/expo", "start"}, "/m", {19000}),
      makeProc(22, 21, node, {"node", "metro-worker"}, "/m", {8081}),
      makeProc(30, 19, node, {"node", "expo/bin/cli", "start"}, "/q"),
      // A Claude Code session started from the Claude app names no launcher.
      makeProc(50, 1, "/Applications/Claude.app/Contents/MacOS/Claude"),
      makeProc(51, 50, "/Applications/Claude.app/Contents/Resources/claude", {"claude"}, "/x"),
      // No rows from here on.
      simulator(61, 0, devices + lower),
      simulator(62, 0, devices + udid.substr(0, 35)),
      makeProc(63, 0, "/bin/launchd_sim", {"launchd_sim"}),
      makeProc(70, 1, node, {"node", "vite"}, project),
      makeProc(71, 1, node, {"node", "vite"}, "/", {3000}),
      makeProc(72, 1, node, {"node", "vite"}, "", {3001}),
      makeProc(73, 1, "/usr/sbin/cupsd", {}, project, {631}),
      // An editor's language server runs inside the editor's bundle.
      makeProc(74, 1, "/Applications/Cursor.app/Contents/Frameworks/Cursor Helper (Plugin).app/Contents/MacOS/"
               "Cursor Helper (Plugin)", {"Cursor Helper (Plugin)", "tsserver.js"}, project, {3005}),
  }, {
      {"bundler:10", "flutter attach", {10}},
      {"bundler:11", "flutter run", {11}},
      {"bundler:12", "Metro", {12}},
      {"bundler:20", "Expo :8081", {20, 21, 22}},
      {"bundler:30", "Expo", {30}},
      {"agent:51", "Claude Code", {51}},
  });
  EXPECT_FALSE(items.at(5).startedBy);

  const std::tuple<std::string, std::vector<std::string>, std::string> cases[] = {
      {"/usr/local/bin/caddy", {"caddy", "run"}, "caddy"},
      {"/usr/bin/ruby", {"puma 6.4.2 (tcp://localhost:3000) [app]"}, "Ruby"},
      // The table's order decides, not the arguments'; words compare in lower case.
      {"/usr/bin/node", {"node", "/app/node_modules/.bin/Vite", "/app/NEXT"}, "Next.js"},
  };
  for (const auto& [path, args, name] : cases) {
    SCOPED_TRACE(args.front());
    expectRows({makeProc(10, 1, path, args, project, {3000})}, {{"server:10", name + " :3000", {10}}});
  }
}

}  // namespace
}  // namespace corvane
