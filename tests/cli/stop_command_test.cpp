// `corvane status` and `corvane stop` through the real executable, against servers the test starts
// itself. Targets are their own ports and project folder, so nothing else on the machine matches. Which
// rows a scan finds and how the report lays them out are the detection's and the report's; which rows
// each rule refuses is the policy's table. This proves the commands put them together, and that stop
// picks the rule by how the row was named.
#include <csignal>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "activity/activity_log.h"
#include "platform/defaults.h"
#include "platform/process_table.h"
#include "support/fake_engine.h"
#include "support/process.h"
#include "support/listeners.h"
#include "support/user_files.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using testing_support::Process;
using testing_support::runCorvane;

class StopCommandTest : public testing::Test, protected testing_support::OwnFolders {
 protected:
  void SetUp() override {
    SKIP_WHERE_USER_FILES_CANNOT_MOVE();
    if (python.empty()) GTEST_SKIP() << "needs python3";
  }

  std::unique_ptr<Process> httpServer(uint16_t port, const std::string& directory) const {
    fs::create_directories(directory);
    auto server = std::make_unique<Process>(
        python, std::vector<std::string>{"-m", "http.server", std::to_string(port), "--bind", "127.0.0.1"},
        testing_support::ProcessOptions{.directory = directory});
    EXPECT_TRUE(testing_support::listening(port));
    return server;
  }

  const std::string python = testing_support::systemPython();
};

bool gone(const Process& process) { return platform::processGone(process.pid()); }

// A server in the test's project that listens on each port given after its first argument and, on
// SIGTERM, exits that many seconds later, or never.
std::unique_ptr<Process> slowServer(const std::string& python, const std::string& directory, const std::string& delay,
                                    const std::vector<uint16_t>& ports) {
  const std::string code = R"(import signal, socket, sys, time
def on_term(number, frame):
    time.sleep(float(sys.argv[1]))
    sys.exit(0)
signal.signal(signal.SIGTERM, signal.SIG_IGN if sys.argv[1] == "never" else on_term)
listeners = [socket.create_server(("127.0.0.1", int(port))) for port in sys.argv[2:]]
while True:
    time.sleep(60)
)";
  std::vector<std::string> arguments{"-c", code, delay};
  for (const uint16_t port : ports) arguments.push_back(std::to_string(port));
  fs::create_directories(directory);
  auto server = std::make_unique<Process>(python, arguments, testing_support::ProcessOptions{.directory = directory});
  for (const uint16_t port : ports) EXPECT_TRUE(testing_support::listening(port));
  return server;
}

TEST_F(StopCommandTest, StatusThenStopByProjectPortIdOrNothingWithAPinnedRow) {
  const std::string project = makeProject();
  const std::string name = fs::path(project).filename();
  const uint16_t webPort = testing_support::freePort(), apiPort = testing_support::freePort();
  const auto web = httpServer(webPort, project + "/web");
  const auto api = httpServer(apiPort, project + "/api");
  const std::string apiKey = "server:" + project + "/api:Python";
  ASSERT_TRUE(platform::DefaultsStore::appSuite().writeDictionary("pins", {{apiKey, std::string()}}));
  const std::string webTitle = "Python :" + std::to_string(webPort), apiTitle = "Python :" + std::to_string(apiPort);

  // Alone in the test's own project, the two rows follow its heading; both are far below 0.1 GB.
  const auto status = runCorvane({"status"});
  EXPECT_EQ(status.exitCode, 0) << status.err;
  const std::string dot = " \xC2\xB7 ";
  const auto line = [&](const std::string& title, const std::string& marks, const Process& server) {
    return "  " + title + std::string(34 - title.size(), ' ') + "   0.0 GB  server" + dot + marks + "1 proc" + dot +
           "server:" + std::to_string(server.pid()) + "\n";
  };
  const std::string webLine = line(webTitle, "", *web), apiLine = line(apiTitle, "pinned" + dot, *api);
  EXPECT_TRUE(status.out.find("\n" + name + "\n" + webLine + apiLine) != std::string::npos ||
              status.out.find("\n" + name + "\n" + apiLine + webLine) != std::string::npos)
      << status.out;
  // The containers of an engine that answers on its socket are rows of their own.
  {
    const testing_support::FakeEngine engine("three");
    ASSERT_TRUE(engine.ready);
    const auto withEngine = runCorvane({"status"}, "", {{"DOCKER_HOST", engine.host()}});
    const std::string shopRow = "\nshop\n  shop-web-1" + std::string(27, ' ') + "0.1 GB  container" + dot +
                                "0 proc" + dot + "container:" + std::string(64, 'a') + "\n";
    EXPECT_NE(withEngine.out.find(shopRow), std::string::npos) << withEngine.out;
    EXPECT_NE(withEngine.out.find("  db,web/db "), std::string::npos);
    EXPECT_NE(withEngine.out.find("  cache "), std::string::npos);
  }
  const auto json = runCorvane({"status", "--json"});
  EXPECT_EQ(json.exitCode, 0);
  nlohmann::json row;
  for (const auto& item : nlohmann::json::parse(json.out))
    if (item["id"] == "server:" + std::to_string(web->pid())) row = item;
  EXPECT_EQ(row["project"], name) << json.out;

  // By project the pin holds and "--yes" has no say.
  const auto dryRun = runCorvane({"stop", name, "--dry-run", "--yes"});
  EXPECT_EQ(dryRun.exitCode, 0) << dryRun.err;
  EXPECT_EQ(dryRun.out, "Left " + apiTitle + " alone: pinned.\nWould stop " + webTitle + " (0.0 GB).\n");
  const auto unmatched = runCorvane({"stop", "nothing-here", "--json", "--force"});
  EXPECT_EQ(unmatched.exitCode, 2);
  EXPECT_EQ(unmatched.out, "[]\n");
  EXPECT_EQ(unmatched.err, "Nothing running matches nothing-here. `corvane status` lists ids, ports and projects.\n");
  EXPECT_FALSE(logTouched());

  // By port the user is told how to insist.
  const auto refused = runCorvane({"stop", std::to_string(apiPort)});
  EXPECT_EQ(refused.exitCode, 3) << refused.err;
  EXPECT_EQ(refused.out, "Left " + apiTitle + " alone: pinned.\nPass --yes to stop it anyway.\n");

  const auto stopped = runCorvane({"stop", std::to_string(webPort)});
  EXPECT_EQ(stopped.exitCode, 0) << stopped.err;
  EXPECT_EQ(stopped.out, "Stopped " + webTitle + " (0.0 GB).\nFreed 0.0 GB.\n");
  EXPECT_EQ(stopped.err, "");
  EXPECT_TRUE(gone(*web));
  EXPECT_FALSE(gone(*api));

  const auto insisted = runCorvane({"stop", "server:" + std::to_string(api->pid()), "--yes", "--json"});
  EXPECT_EQ(insisted.exitCode, 0) << insisted.err;
  const auto outcomes = nlohmann::json::parse(insisted.out);
  ASSERT_EQ(outcomes.size(), 1u) << insisted.out;
  EXPECT_EQ(outcomes[0]["title"], apiTitle);
  EXPECT_EQ(outcomes[0]["state"], "stopped");
  EXPECT_TRUE(gone(*api));

  const auto entries = ActivityLog::standard().read();
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0].title, webTitle);
  EXPECT_EQ(entries[0].reason, "corvane stop");
}

// A row is named by any of its ports, and one that takes a while to go on SIGTERM is waited for.
TEST_F(StopCommandTest, ByItsSecondPortARowThatTakesItsTimeToGo) {
  const uint16_t one = testing_support::freePort(), other = testing_support::freePort();
  const uint16_t first = std::min(one, other), second = std::max(one, other);
  const auto server = slowServer(python, makeProject() + "/api", "1.5", {first, second});
  const auto stopped = runCorvane({"stop", std::to_string(second)});
  EXPECT_EQ(stopped.exitCode, 0) << stopped.out << stopped.err;
  EXPECT_EQ(stopped.out, "Stopped Python :" + std::to_string(first) + " (0.0 GB).\nFreed 0.0 GB.\n");
  EXPECT_TRUE(gone(*server));
}

// Interrupted while it waits for a row that ignores SIGTERM, stop still records the row that did stop,
// and exits as a shell reports the signal.
TEST_F(StopCommandTest, InterruptedWhileWaitingRecordsWhatStopped) {
  const std::pair<int, int> signals[] = {{SIGINT, 130}, {SIGTERM, 143}};
  for (size_t i = 0; i < std::size(signals); ++i) {
    const auto [signal, exitCode] = signals[i];
    const std::string project = makeProject();
    const uint16_t webPort = testing_support::freePort(), stubbornPort = testing_support::freePort();
    const auto web = httpServer(webPort, project + "/web");
    const auto stubborn = slowServer(python, project + "/api", "never", {stubbornPort});
    Process stop(CORVANE_EXE, {"stop", fs::path(project).filename()}, {.captureErrors = true});
    for (int wait = 0; wait < 500 && !gone(*web); ++wait) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_TRUE(gone(*web));
    ASSERT_EQ(kill(stop.pid(), signal), 0);
    EXPECT_EQ(stop.waitExit(4), exitCode) << signal;
    EXPECT_FALSE(gone(*stubborn));
    const auto entries = ActivityLog::standard().read();
    ASSERT_EQ(entries.size(), i + 1) << signal;
    EXPECT_EQ(entries.back().title, "Python :" + std::to_string(webPort));
  }
}

}  // namespace
}  // namespace corvane
