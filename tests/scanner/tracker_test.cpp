// The idle tracker over hand-made scans.
#include <gtest/gtest.h>

#include "scanner/tracker.h"

namespace corvane {
namespace {

constexpr uint64_t second = 1'000'000'000;

Date at(double seconds) { return dateFromSeconds(1'772'442'000 + seconds); }

Item row(const std::string& id, uint64_t cpuTime, int64_t inbound = 0, Item::Kind kind = Item::Kind::server) {
  return {.id = id, .kind = kind, .pids = {100}, .inbound = inbound, .cpuTimeNanoseconds = cpuTime};
}

Item scan(Tracker& tracker, const Item& item, double seconds) { return tracker.update({item}, at(seconds))[0]; }

TEST(TrackerTest, CpuFromTheNewestSampleAtLeastTenSecondsOldBuildsAreBusyIdleAfterTenQuietMinutes) {
  Tracker tracker;
  const Item first = scan(tracker, row("s", 10 * second), 0);
  EXPECT_EQ(first.cpuCores, 0);
  EXPECT_FALSE(first.building);
  EXPECT_FALSE(first.idleSince);
  const Item busy = scan(tracker, row("s", 12'500'000'000), 5);
  EXPECT_DOUBLE_EQ(busy.cpuCores, 0.5);
  EXPECT_TRUE(busy.building);
  // A process of the tree exited and the sum went down: no wrap-around.
  EXPECT_EQ(scan(tracker, row("s", 1 * second), 7).cpuCores, 0);

  for (int t : {0, 4, 8, 12}) scan(tracker, row("x", static_cast<uint64_t>(t) * second), t);
  // At 14 s the 4 s sample is exactly 10 s old, not older: the base stays at 0 s.
  EXPECT_DOUBLE_EQ(scan(tracker, row("x", 14 * second), 14).cpuCores, 1.0);
  // At 19 s the 8 s sample is the newest over 10 s old.
  EXPECT_DOUBLE_EQ(scan(tracker, row("x", 13'500'000'000), 19).cpuCores, 0.5);

  // A connected client means a Gradle daemon builds, even without CPU; a server's clients don't.
  const auto items = tracker.update({row("gradle:1", 0, 1, Item::Kind::gradle), row("server:2", 0, 1)}, at(20));
  EXPECT_TRUE(items[0].building);
  EXPECT_FALSE(items[1].building);

  // Idle after ten quiet minutes, until active again.
  Tracker idle;
  scan(idle, row("db", 0), 0);
  EXPECT_FALSE(scan(idle, row("db", 0), 300).idleSince);
  EXPECT_EQ(scan(idle, row("db", 0), 600).idleSince, at(0));
  // From the 300 s sample, the newest at least 10 s old: 5 s over 310 s is above 0.01 cores.
  EXPECT_FALSE(scan(idle, row("db", 5 * second), 610).idleSince);
  EXPECT_EQ(scan(idle, row("db", 5 * second), 1210).idleSince, at(610));
  // Connections keep a row active without CPU.
  EXPECT_FALSE(scan(idle, row("db", 5 * second, 2), 1220).idleSince);
}

TEST(TrackerTest, GoneRowsAreForgottenAndRowsWithoutProcessesPassUntouched) {
  Tracker tracker;
  Item container{.id = "container:a1", .cpuCores = 0.7};
  EXPECT_EQ(tracker.update({row("a", 0), row("b", 0), container}, at(0))[2], container);
  tracker.update({row("a", 0)}, at(700));
  EXPECT_EQ(tracker.samples.count("b"), 0u);
  EXPECT_EQ(tracker.lastActive.count("b"), 0u);
  EXPECT_EQ(tracker.samples.count("container:a1"), 0u);
  // Back with the same id: first sight again, so active and unmeasured.
  const Item back = scan(tracker, row("b", 50 * second), 1400);
  EXPECT_EQ(back.cpuCores, 0);
  EXPECT_FALSE(back.idleSince);
}

}  // namespace
}  // namespace corvane
