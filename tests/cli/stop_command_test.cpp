// `corvane stop` through the real executable, against servers and a database the tests start
// themselves. Targets are their own ports and project folders, so nothing else on the machine matches.
#include <filesystem>

#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "activity/activity_log.h"
#include "platform/defaults.h"
#include "platform/process_table.h"
#include "support/process.h"
#include "support/fake_programs.h"
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
  std::vector<Activity> logged() const { return ActivityLog::standard().read(); }

  const std::string python = testing_support::systemPython();
};

std::unique_ptr<Process> httpServer(const std::string& python, uint16_t port, const std::string& directory) {
  auto server = std::make_unique<Process>(
      python, std::vector<std::string>{"-m", "http.server", std::to_string(port), "--bind", "127.0.0.1"},
      testing_support::ProcessOptions{.directory = directory});
  EXPECT_TRUE(testing_support::listening(port));
  return server;
}

bool gone(const Process& process) { return platform::processGone(process.pid()); }

TEST_F(StopCommandTest, ADevServerByPortAndAProjectWithAPinnedRow) {
  const std::string project = makeProject();
  const std::string name = fs::path(project).filename();
  fs::create_directories(project + "/web");
  fs::create_directories(project + "/api");
  const uint16_t webPort = testing_support::freePort(), apiPort = testing_support::freePort();
  const auto web = httpServer(python, webPort, project + "/web");
  const auto api = httpServer(python, apiPort, project + "/api");
  const std::string apiKey = "server:" + project + "/api:Python";
  ASSERT_TRUE(platform::DefaultsStore::appSuite().writeDictionary("pins", {{apiKey, std::string()}}));
  const std::string webTitle = "Python :" + std::to_string(webPort), apiTitle = "Python :" + std::to_string(apiPort);

  const auto dryRun = runCorvane({"stop", name, "--dry-run"});
  EXPECT_EQ(dryRun.exitCode, 0) << dryRun.err;
  EXPECT_EQ(dryRun.out, "Left " + apiTitle + " alone: pinned.\nWould stop " + webTitle + " (0.0 GB).\n");
  EXPECT_FALSE(logTouched());

  const auto stopped = runCorvane({"stop", std::to_string(webPort)});
  EXPECT_EQ(stopped.exitCode, 0) << stopped.err;
  EXPECT_EQ(stopped.out, "Stopped " + webTitle + " (0.0 GB).\nFreed 0.0 GB.\n");
  EXPECT_EQ(stopped.err, "");
  EXPECT_TRUE(gone(*web));
  EXPECT_FALSE(gone(*api));
  const auto entries = logged();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].title, webTitle);
  EXPECT_EQ(entries[0].kind, Item::Kind::server);
  EXPECT_EQ(entries[0].reason, "corvane stop");
  EXPECT_GT(entries[0].memory, 0u);
  EXPECT_FALSE(entries[0].undo);
}

TEST_F(StopCommandTest, ADatabaseByPortNeedsYes) {
  const std::string redis = "/usr/bin/redis-server";
  if (access(redis.c_str(), X_OK) != 0) GTEST_SKIP() << "needs redis-server";
  const uint16_t port = testing_support::freePort();
  Process db(redis,
                  {"--port", std::to_string(port), "--bind", "127.0.0.1", "--save", "", "--appendonly",
                   "no", "--dir", root},
                  {.directory = root});
  ASSERT_TRUE(testing_support::listening(port));
  const std::string target = std::to_string(port), title = "Redis :" + target;

  const auto refused = runCorvane({"stop", target});
  EXPECT_EQ(refused.exitCode, 3) << refused.err;
  EXPECT_EQ(refused.out, "Left " + title + " alone: a database.\nPass --yes to stop it anyway.\n");

  const auto refusedJSON = runCorvane({"stop", target, "--json"});
  EXPECT_EQ(refusedJSON.exitCode, 3);
  const auto outcomes = nlohmann::json::parse(refusedJSON.out);
  ASSERT_EQ(outcomes.size(), 1u);
  EXPECT_EQ(outcomes[0]["id"], "db:" + std::to_string(db.pid()));
  EXPECT_EQ(outcomes[0]["state"], "skipped");
  EXPECT_FALSE(gone(db));
  EXPECT_FALSE(logTouched());

  const auto stopped = runCorvane({"stop", target, "--yes"});
  EXPECT_EQ(stopped.exitCode, 0) << stopped.err;
  EXPECT_EQ(stopped.out, "Stopped " + title + " (0.0 GB).\nFreed 0.0 GB.\n");
  EXPECT_TRUE(gone(db));
  ASSERT_EQ(logged().size(), 1u);
  EXPECT_EQ(logged()[0].kind, Item::Kind::database);
}

TEST_F(StopCommandTest, NothingMatches) {
  const std::string message = "Nothing running matches nothing-here. `corvane status` lists ids, ports and projects.\n";
  const auto text = runCorvane({"stop", "nothing-here"});
  EXPECT_EQ(text.exitCode, 2);
  EXPECT_EQ(text.out, "");
  EXPECT_EQ(text.err, message);

  const auto json = runCorvane({"stop", "nothing-here", "--json", "--force"});
  EXPECT_EQ(json.exitCode, 2);
  EXPECT_EQ(json.out, "[]\n");
  EXPECT_EQ(json.err, message);
  EXPECT_FALSE(logTouched());
}

}  // namespace
}  // namespace corvane
