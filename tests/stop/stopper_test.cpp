// The stopper, the shared stop routine and the undo of a logged stop, against processes and fake tools
// that the tests start themselves.
#include "stop/stopper.h"

#include <filesystem>

#include <unistd.h>

#include <gtest/gtest.h>

#include "activity/activity_log.h"
#include "activity/undo.h"
#include "platform/process_table.h"
#include "stop/stop_rows.h"
#include "support/process.h"
#include "support/fake_programs.h"
#include "support/user_files.h"
#include "tools/tools.h"

namespace corvane {
namespace {

using testing_support::Process;
using testing_support::readFile;
using testing_support::writeScript;
using Result = Stopper::Result;

const Result notOurs = Result::failed("Test row belongs to the system or another user.");

Item rowOf(std::vector<int32_t> pids, std::optional<Stop> stop = Stop::signal()) {
  return {.title = "Test row", .pids = std::move(pids), .stop = std::move(stop)};
}

bool alive(pid_t pid) { return !platform::processGone(pid); }

// The stop of a row as a scan taken now would have recorded it.
Result stopNow(const Item& row, const Tools& tools, bool force, double wait) {
  StartTimes started;
  for (int32_t pid : row.pids)
    if (const auto start = platform::processStarted(pid)) started.emplace(pid, *start);
  return Stopper::stop(row, started, tools, force, wait);
}

platform::ScannedProcess scanned(pid_t pid) { return {pid, platform::processStarted(pid).value_or(Date{})}; }

// A process that shrugs off SIGTERM; it has set that up by the time the constructor returns.
struct Stubborn {
  Process process{testing_support::systemPython(),
                  {"-c", "import signal, time\nsignal.signal(signal.SIGTERM, signal.SIG_IGN)\n"
                         "print('ready', flush=True)\ntime.sleep(600)\n"}};
  Stubborn() { EXPECT_EQ(process.readLine(), "ready"); }
};

struct Sleeper : Process {
  Sleeper() : Process("/bin/sleep", {"60"}) {}
};

// `sleep` run under another user id, returned once that user owns it; null unless this is root.
std::unique_ptr<Process> sleeperOfAnotherUser() {
  if (getuid() != 0) return nullptr;
  const uid_t other = 40000 + static_cast<uid_t>(getpid() % 20000);
  auto child = std::make_unique<Process>([other] {
    if (setgid(other) == 0 && setuid(other) == 0)  // as root, both set the real, effective and saved ids
      execl("/bin/sleep", "sleep", "60", static_cast<char*>(nullptr));
  });
  for (int i = 0; i < 500; ++i) {
    const auto owner = platform::processOwner(child->pid());
    if (owner && owner->realUid == other && owner->path && owner->path->ends_with("/sleep")) return child;
    usleep(10'000);
  }
  return nullptr;
}

// Tools that log their arguments to `log`, and broken ones of the same names that fail.
std::pair<Tools, Tools> fakeTools(const std::string& dir, const std::string& log,
                                  const std::vector<std::string>& names) {
  Tools tools, broken;
  for (const std::string& tool : names) {
    tools.paths[tool] = writeScript(dir + "/" + tool, "echo " + tool + " \"$@\" >> " + log + "\n");
    broken.paths[tool] = writeScript(dir + "/broken-" + tool, "exit 1\n");
  }
  return {tools, broken};
}

// What the stopper never signals, with or without force.
TEST(StopperTest, NeverThisProgramTheFirstPidsSystemProgramsUnscannedPidsOrOtherUsers) {
  Sleeper sleeper;
  EXPECT_TRUE(Stopper::mayStop(sleeper.pid()));
  for (int32_t pid : {-1, 0, 1, static_cast<int32_t>(getpid()), static_cast<int32_t>(getppid()), 0x7ffffff0})
    EXPECT_FALSE(Stopper::mayStop(pid)) << pid;
  for (bool force : {false, true}) EXPECT_EQ(stopNow(rowOf({0, 1, getpid(), getppid()}), {}, force, 1), notOurs);

  // logsave waits for the command it runs, so it stays a process whose program lies in /usr/sbin.
  Process system("/usr/sbin/logsave", {"/dev/null", "/bin/sleep", "60"});
  ASSERT_GT(system.pid(), 0);
  EXPECT_FALSE(Stopper::mayStop(system.pid()));
  EXPECT_EQ(stopNow(rowOf({system.pid()}), {}, true, 1), notOurs);
  EXPECT_TRUE(alive(system.pid()));

  // A pid the scan did not record is never signalled; one recorded with another start time names a
  // newer process now: the scanned one is gone, and the newer one is left alone.
  const auto started = platform::processStarted(sleeper.pid());
  ASSERT_TRUE(started);
  const StartTimes earlier = {{sleeper.pid(), *started - std::chrono::seconds(1)}};
  for (bool force : {false, true}) {
    EXPECT_EQ(Stopper::stop(rowOf({sleeper.pid()}), {}, {}, force, 1), notOurs);
    EXPECT_EQ(Stopper::stop(rowOf({sleeper.pid()}), earlier, {}, force, 1), Result::stopped());
    EXPECT_EQ(Stopper::stop(rowOf({sleeper.pid()}, Stop::emulator(std::nullopt)), earlier, {}, force, 1),
              Result::stopped());
  }
  EXPECT_TRUE(alive(sleeper.pid()));

  const auto other = sleeperOfAnotherUser();
  if (!other) GTEST_SKIP() << "needs root to start a process under another user";
  EXPECT_FALSE(Stopper::mayStop(other->pid()));
  EXPECT_EQ(stopNow(rowOf({other->pid()}), {}, true, 1), notOurs);
  EXPECT_TRUE(alive(other->pid()));
}

TEST(StopperTest, SignalsAndTheirWait) {
  EXPECT_EQ(stopNow(rowOf({}, std::nullopt), {}, false, 1), Result::failed("Test row isn't stopped by Corvane."));
  Sleeper polite;
  EXPECT_EQ(stopNow(rowOf({polite.pid(), 1}), {}, false, 5), Result::stopped());

  Stubborn stubborn;
  const Item row = rowOf({stubborn.process.pid()});
  EXPECT_EQ(stopNow(row, {}, false, 0.5), Result::stillRunning());
  EXPECT_TRUE(alive(stubborn.process.pid()));
  EXPECT_EQ(stopNow(row, {}, true, 5), Result::stopped());

  // An exited process counts as gone before it is reaped.
  Process exited([] {});  // a zombie until the test reaps it
  Sleeper sleeper;
  using Wait = Stopper::Wait;
  EXPECT_EQ(Stopper::waitGone({}, 0), Wait{});
  EXPECT_EQ(Stopper::waitGone({scanned(exited.pid())}, 5), Wait{});
  EXPECT_EQ(Stopper::waitGone({scanned(exited.pid()), scanned(sleeper.pid())}, 0.3), Wait{Wait::State::running});
}

// Devices and containers are stopped through their tools: fake ones that log their arguments, and
// broken ones that fail.
TEST(StopperTest, DevicesAndContainersGoThroughTheirTools) {
  const std::string dir = testing_support::makeTempDir("tools"), log = dir + "/log";
  const auto [tools, broken] = fakeTools(dir, log, {"docker", "xcrun", "adb"});
  const Item containers = rowOf({}, Stop::containers({"abc123", "def456"}));
  const std::string udid = "5B3E2C1A-0000-4000-8000-00000000ABCD";
  const Item simulator = rowOf({}, Stop::simulator(udid, false));
  EXPECT_EQ(stopNow(containers, tools, false, 5), Result::stopped());
  EXPECT_EQ(stopNow(containers, tools, true, 5), Result::stopped());
  EXPECT_EQ(stopNow(simulator, tools, false, 5), Result::stopped());
  EXPECT_EQ(stopNow(rowOf({}, Stop::simulator(udid, true)), tools, false, 5), Result::stopped());
  // Forced, the device's processes are killed and simctl is not asked.
  Sleeper device;
  EXPECT_EQ(stopNow(rowOf({device.pid()}, Stop::simulator(udid, false)), tools, true, 5), Result::stopped());
  // adb said yes: the emulator's processes are waited for, not signalled.
  Stubborn stubborn;
  EXPECT_EQ(stopNow(rowOf({stubborn.process.pid()}, Stop::emulator("emulator-5554")), tools, false, 0.3),
            Result::stillRunning());
  // Without a serial, or when adb fails, the emulator gets SIGTERM.
  Sleeper withoutSerial, adbFailed;
  EXPECT_EQ(stopNow(rowOf({withoutSerial.pid()}, Stop::emulator(std::nullopt)), tools, false, 5), Result::stopped());
  EXPECT_EQ(stopNow(rowOf({adbFailed.pid()}, Stop::emulator("emulator-5554")), broken, false, 5), Result::stopped());
  EXPECT_EQ(readFile(log), "docker stop abc123 def456\ndocker kill abc123 def456\nxcrun simctl shutdown " + udid +
                               "\nxcrun simctl --set previews shutdown " + udid + "\nadb -s emulator-5554 emu kill\n");

  EXPECT_EQ(stopNow(containers, broken, false, 5), Result::failed("docker stop failed."));
  EXPECT_EQ(stopNow(containers, broken, true, 5), Result::failed("docker kill failed."));
  EXPECT_EQ(stopNow(simulator, broken, false, 5), Result::failed("simctl couldn't shut down Test row."));
  EXPECT_EQ(stopNow(containers, {}, true, 5), Result::failed("docker not found."));
  EXPECT_EQ(stopNow(simulator, {}, false, 5), Result::failed("xcrun not found."));
}

// The shared stop routine: rows in parallel, outcomes as they finish, one log append for what stopped.
Item containerRow(const std::string& id, std::vector<std::string> containers) {
  return {.id = "container:" + id, .kind = Item::Kind::container, .title = id, .memory = 300'000'000,
          .counted = false, .stop = Stop::containers(std::move(containers))};
}

TEST(StopRowsTest, OutcomesInFinishingOrderAndOneEntryPerStop) {
  SKIP_WHERE_USER_FILES_CANNOT_MOVE();
  const ActivityLog log = ActivityLog::standard();
  std::filesystem::remove_all(std::filesystem::path(log.path).parent_path());
  const std::string dir = testing_support::makeTempDir("rows");
  Tools tools;
  // The slow container finishes last although it comes first.
  tools.paths["docker"] = writeScript(dir + "/docker", "case \"$2\" in slow) sleep 1 ;; bad) exit 1 ;; esac\n");
  Sleeper server;
  const Item process{.id = "server:" + std::to_string(server.pid()), .title = "Python :8000",
                     .pids = {server.pid()}, .memory = 1'200'000'000, .stop = Stop::signal()};

  const StartTimes started = {{server.pid(), platform::processStarted(server.pid()).value()}};
  const auto outcomes = stopRows({containerRow("db", {"slow", "x"}), containerRow("web", {"bad"}), process}, started,
                                 StopMode::polite, "corvane stop", tools);
  ASSERT_EQ(outcomes.size(), 3u);
  EXPECT_EQ(outcomes[2], makeOutcome(containerRow("db", {}), Outcome::State::stopped));
  const auto failed = makeOutcome(containerRow("web", {}), Outcome::State::failed, "docker stop failed.");
  const auto stopped = makeOutcome(process, Outcome::State::stopped);
  EXPECT_TRUE((outcomes[0] == failed && outcomes[1] == stopped) || (outcomes[0] == stopped && outcomes[1] == failed));

  // What each entry holds is the activity's own; here, that only stopped rows are logged.
  const auto entries = log.read();
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0].title, "Python :8000");
  EXPECT_EQ(entries[1].title, "db");
  EXPECT_EQ(entries[1].undo, Undo::start({"slow", "x"}));
  for (const Activity& entry : entries) EXPECT_EQ(entry.reason, "corvane stop");
}

// The undo of a logged stop.
TEST(RelaunchTest, EachRecordThroughItsTool) {
  const std::string dir = testing_support::makeTempDir("relaunch"), log = dir + "/log";
  auto [tools, broken] = fakeTools(dir, log, {"xcrun", "docker", "emulator"});
  broken.paths["emulator"] = dir + "/missing";
  const Tools elsewhere{.paths = {{"adb", tools.paths["xcrun"]}}};

  EXPECT_TRUE(Undo::boot("UDID-1").perform(tools));
  EXPECT_TRUE(Undo::start({"a1", "b2"}).perform(tools));
  EXPECT_TRUE(Undo::avd("Pixel_8").perform(tools));
  // The emulator is left to run on its own; give it a moment to write its line.
  for (int i = 0; i < 200 && readFile(log).find("-avd") == std::string::npos; ++i) usleep(10'000);
  EXPECT_EQ(readFile(log), "xcrun simctl boot UDID-1\ndocker start a1 b2\nemulator -avd Pixel_8\n");

  for (const Undo& undo : {Undo::boot("UDID-1"), Undo::start({"a1"}), Undo::avd("Pixel_8")}) {
    EXPECT_FALSE(undo.perform(broken));
    EXPECT_FALSE(undo.perform(elsewhere));
    EXPECT_FALSE(undo.perform(Tools{}));
  }
}

}  // namespace
}  // namespace corvane
