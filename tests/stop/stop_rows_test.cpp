// The shared stop routine: rows in parallel, outcomes as they finish, one log append for what stopped.
#include "stop/stop_rows.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "activity/activity_log.h"
#include "platform/process_table.h"
#include "support/process.h"
#include "support/fake_programs.h"
#include "support/user_files.h"

namespace corvane {
namespace {

using testing_support::writeScript;

Item containerRow(const std::string& id, std::vector<std::string> containers) {
  return {.id = "container:" + id, .kind = Item::Kind::container, .title = id, .memory = 300'000'000,
          .counted = false, .stop = Stop::containers(std::move(containers))};
}

class StopRowsTest : public testing::Test {
 protected:
  void SetUp() override {
    SKIP_WHERE_USER_FILES_CANNOT_MOVE();
    std::filesystem::remove_all(std::filesystem::path(log.path).parent_path());
  }
  const ActivityLog log = ActivityLog::standard();
};

TEST_F(StopRowsTest, OutcomesInFinishingOrderAndOneEntryPerStop) {
  const std::string dir = testing_support::makeTempDir("rows");
  Tools tools;
  // The slow container finishes last although it comes first.
  tools.paths["docker"] = writeScript(dir + "/docker", "case \"$2\" in slow) sleep 1 ;; bad) exit 1 ;; esac\n");
  testing_support::Process server("/bin/sleep", {"60"});
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

}  // namespace
}  // namespace corvane
