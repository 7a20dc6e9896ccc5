#include "scanner/scanner.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <plist/plist.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/docker_socket.h"
#include "platform/paths.h"
#include "support/fake_programs.h"
#include "support/listeners.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using testing_support::makeTempDir;
using testing_support::readFile;
using testing_support::ScopedEnv;

Date at(double seconds) { return dateFromSeconds(1'800'000'000 + seconds); }

Proc process(int32_t pid, const std::string& path, std::vector<std::string> args, const std::string& cwd = "/") {
  return Proc{.pid = pid, .ppid = 1, .path = path, .args = std::move(args), .cwd = cwd,
              .name = std::string(lastPathComponent(path))};
}

const Proc colima = process(100, "/opt/homebrew/bin/colima", {"colima", "start"});

// The machine as the test describes it; each scan sees it as it is at that moment.
struct FakeMachine {
  std::vector<Proc> procs;
  Date taken = at(0);

  Scanner::SnapshotSource source() {
    return [this](ArgsCache&) { return Snapshot{procs, taken}; };
  }
};

const Item* row(const std::vector<Item>& items, const std::string& id) {
  for (const auto& item : items)
    if (item.id == id) return &item;
  return nullptr;
}

std::vector<std::string> containerIds(const std::vector<Item>& items) {
  std::vector<std::string> ids;
  for (const auto& item : items)
    if (item.kind == Item::Kind::container) ids.push_back(item.id);
  return ids;
}

// Waits for something a background refresh or a child does, for at most 10 s.
bool eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

// A docker whose n-th `ps` lists the one container "cN" (with N MiB in `stats`). Each `ps` is counted
// in the file "ps-calls" beside it, and waits while a file "hold" is there.
struct FakeDocker {
  std::string dir = makeTempDir("docker");
  std::string path = testing_support::writeScript(
      dir + "/docker",
      "cd \"$(dirname \"$0\")\"\n"
      "case \"$1\" in\n"
      "ps) n=$(( $(cat ps-calls 2>/dev/null || echo 0) + 1 )); echo $n > ps-calls\n"
      "    while [ -e hold ]; do sleep 0.01; done\n"
      "    echo \"{\\\"ID\\\":\\\"c$n\\\",\\\"Names\\\":\\\"web-$n\\\",\\\"Image\\\":\\\"nginx\\\"}\" ;;\n"
      "stats) echo \"{\\\"ID\\\":\\\"c$(cat ps-calls)\\\",\\\"MemUsage\\\":\\\"$(cat ps-calls)MiB / 1GiB\\\"}\" ;;\n"
      "esac\n");

  Tools tools() const { return Tools{{{"docker", path}}}; }
  int psCalls() const {
    const std::string text = readFile(dir + "/ps-calls");
    return text.empty() ? 0 : std::atoi(text.c_str());
  }
  void hold() const { std::ofstream(dir + "/hold"); }
  void release() const { fs::remove(dir + "/hold"); }
};

// While an engine runs (its process or its socket), containers are refreshed in the background at most
// every ten seconds; without one they are gone.
TEST(ScannerTest, ContainersAreRefreshedInTheBackgroundWhileAnEngineRuns) {
  const FakeDocker docker;
  FakeMachine machine{{colima}};
  Scanner scanner(docker.tools(), machine.source());
  const std::string runtimeDir = makeTempDir("runtime");
  const std::string socketPath = runtimeDir + "/engine.sock";
  const ScopedEnv host("DOCKER_HOST", "unix://" + socketPath);
  const ScopedEnv runtime("XDG_RUNTIME_DIR", runtimeDir);
  testing_support::writeScript(runtimeDir + "/docker.sock", "");  // a plain file of that name is no engine

  // The first list is waited for.
  auto items = scanner.scan();
  EXPECT_EQ(containerIds(items), std::vector<std::string>{"container:c1"});
  EXPECT_EQ(row(items, "container:c1")->memory, 1048576u);
  EXPECT_EQ(docker.psCalls(), 1);

  machine.taken = at(5);
  scanner.scan();
  machine.taken = at(10);
  scanner.scan();
  EXPECT_EQ(docker.psCalls(), 1);

  // 11 s after the first refresh another starts; the scan does not wait for it.
  docker.hold();
  machine.taken = at(11);
  EXPECT_EQ(containerIds(scanner.scan()), std::vector<std::string>{"container:c1"});
  ASSERT_TRUE(eventually([&] { return docker.psCalls() == 2; }));
  // While it runs, no other one starts, however much time has passed.
  machine.taken = at(30);
  EXPECT_EQ(containerIds(scanner.scan()), std::vector<std::string>{"container:c1"});

  docker.release();
  machine.taken = at(15);
  EXPECT_TRUE(eventually([&] { return containerIds(scanner.scan()) == std::vector<std::string>{"container:c2"}; }));
  EXPECT_EQ(docker.psCalls(), 2);

  if (platform::dockerSocketExists()) GTEST_SKIP() << "this machine has a Docker socket of its own";
  machine.procs.clear();
  {
    // No engine process, but an engine's socket.
    testing_support::Socket engine(AF_UNIX);
    ASSERT_TRUE(engine.bind(socketPath));
    machine.taken = at(16);
    EXPECT_EQ(containerIds(scanner.scan()), std::vector<std::string>{"container:c2"});
    // An engine reached over TCP has no socket here.
    const ScopedEnv tcp("DOCKER_HOST", "tcp://" + socketPath);
    machine.taken = at(17);
    EXPECT_TRUE(containerIds(scanner.scan()).empty());
  }
  // An engine process that appears brings them back only with the next refresh that is due.
  machine.procs = {colima};
  machine.taken = at(18);
  EXPECT_TRUE(containerIds(scanner.scan()).empty());
  EXPECT_EQ(docker.psCalls(), 2);
}

// Rows carry the name of the nearest repository above their folder, which the scanner remembers for
// its life, and their CPU use since an earlier scan.
TEST(ScannerTest, RowsCarryTheirProjectAndRecentCPUUse) {
  const std::string root = fs::canonical(makeTempDir("projects"));
  fs::create_directories(root + "/app/.git");
  fs::create_directories(root + "/app/src/lib");
  fs::create_directories(root + "/plain/src");
  fs::create_directories(root + "/worktree/src");
  std::ofstream(root + "/worktree/.git") << "gitdir: /elsewhere\n";

  Proc server = process(300, "/usr/bin/node", {"node", "server.js"}, root + "/app/src/lib");
  server.listening = {3000};
  server.cpuTimeNanoseconds = 1'000'000'000;
  FakeMachine machine{{server}};
  Scanner scanner(Tools{}, machine.source());
  const auto first = scanner.scan();
  ASSERT_NE(row(first, "server:300"), nullptr);
  EXPECT_EQ(row(first, "server:300")->project, "app");
  EXPECT_EQ(row(first, "server:300")->cpuCores, 0);
  EXPECT_FALSE(row(first, "server:300")->building);
  machine.procs[0].cpuTimeNanoseconds += 2'500'000'000;
  machine.taken = at(5);
  const auto second = scanner.scan();
  ASSERT_NE(row(second, "server:300"), nullptr);
  EXPECT_DOUBLE_EQ(row(second, "server:300")->cpuCores, 0.5);
  EXPECT_TRUE(row(second, "server:300")->building);

  EXPECT_EQ(scanner.projectName(root + "/worktree/src"), "worktree");
  EXPECT_EQ(scanner.projectName(root + "/plain/src"), "src");
  EXPECT_EQ(scanner.projectName(platform::homeDirectory()), std::nullopt);
  // A repository made later is not noticed by this scanner.
  fs::create_directories(root + "/plain/.git");
  EXPECT_EQ(scanner.projectName(root + "/plain/src"), "src");
  EXPECT_EQ(Scanner(Tools{}, machine.source()).projectName(root + "/plain/src"), "plain");
}

void writeDevicePlist(const std::string& device, plist_t name, bool binary = true) {
  plist_t root = plist_new_dict();
  plist_dict_set_item(root, "name", name);
  char* bytes = nullptr;
  uint32_t length = 0;
  binary ? plist_to_bin(root, &bytes, &length) : plist_to_xml(root, &bytes, &length);
  std::ofstream(device + "/device.plist", std::ios::binary).write(bytes, length);
  std::free(bytes);
  plist_free(root);
}

// Names come from the device's own plist; a device without one is asked again, a named one is not.
TEST(ScannerTest, SimulatorsAreTitledWithTheirDeviceNames) {
  const std::string devices = makeTempDir("CoreSimulator") + "/Devices/";
  const std::string named = "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9";
  const std::string unnamed = "FFFFFFFF-0000-1111-2222-333333333333";
  const auto inside = [&](const std::string& udid) { return devices + udid + "/data/var/run/launchd_bootstrap.plist"; };
  for (const auto& udid : {named, unnamed}) fs::create_directories(devices + udid + "/data/var/run");
  EXPECT_EQ(simulatorName(inside(named), named), std::nullopt);  // no device.plist yet
  writeDevicePlist(devices + named, plist_new_string("iPhone 16"), false);

  FakeMachine machine{{process(200, "/Library/Developer/CoreSimulator/launchd_sim", {"launchd_sim", inside(named)}),
                       process(202, "/Library/Developer/CoreSimulator/launchd_sim", {"launchd_sim", inside(unnamed)})}};
  Scanner scanner(Tools{}, machine.source());
  const auto titles = [&] {
    std::vector<std::string> titles;
    for (const auto& item : scanner.scan()) titles.push_back(item.title);
    std::sort(titles.begin(), titles.end());
    return titles;
  };
  EXPECT_EQ(titles(), (std::vector<std::string>{"Simulator", "iPhone 16"}));
  // A binary one, with a name long enough for an extended length.
  writeDevicePlist(devices + unnamed, plist_new_string("iPad Air (5th generation)"));
  writeDevicePlist(devices + named, plist_new_string("Renamed"));
  EXPECT_EQ(simulatorName(inside(named), named), "Renamed");
  machine.taken = at(2);
  EXPECT_EQ(titles(), (std::vector<std::string>{"iPad Air (5th generation)", "iPhone 16"}));

  // The UDID must be a whole directory name of the path.
  EXPECT_EQ(simulatorName(devices + "x" + named + "/data", named), std::nullopt);
}

}  // namespace
}  // namespace corvane
