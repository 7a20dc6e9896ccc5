// The idle tracker over hand-made scans.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "detect/tracker.h"

namespace corvane {
namespace {

using ::testing::IsEmpty;

constexpr uint64_t second = 1'000'000'000;
const Date t0 = dateFromSeconds(1'772'442'000);

Date at(double seconds) { return t0 + std::chrono::microseconds(static_cast<int64_t>(seconds * 1e6)); }

Item row(const std::string& id, uint64_t cpuTime, Item::Kind kind = Item::Kind::server) {
  Item item;
  item.id = id;
  item.kind = kind;
  item.pids = {100};
  item.cpuTime = cpuTime;
  return item;
}

Item scan(Tracker& tracker, const Item& item, double seconds) { return tracker.update({item}, at(seconds))[0]; }

TEST(TrackerTest, CpuIsMeasuredBetweenScans) {
  Tracker tracker;
  const Item first = scan(tracker, row("server:1", 10 * second), 0);
  EXPECT_EQ(first.cpu, 0);
  EXPECT_FALSE(first.building);
  EXPECT_FALSE(first.idleSince);

  const Item busy = scan(tracker, row("server:1", 10 * second + 25 * second / 10), 5);
  EXPECT_DOUBLE_EQ(busy.cpu, 0.5);
  EXPECT_TRUE(busy.building);

  // A process of the tree exited, so the sum went down: no negative use, no wrap-around.
  const Item shrunk = scan(tracker, row("server:1", 1 * second), 7);
  EXPECT_EQ(shrunk.cpu, 0);
  EXPECT_FALSE(shrunk.building);
}

TEST(TrackerTest, BaseSampleIsTheNewestAtLeastTenSecondsOld) {
  Tracker tracker;
  for (int t : {0, 4, 8, 12}) scan(tracker, row("x", static_cast<uint64_t>(t) * second), t);
  // At 14 s the sample of 4 s is exactly 10 s old, not older: the base stays at 0 s.
  EXPECT_DOUBLE_EQ(scan(tracker, row("x", 14 * second), 14).cpu, 1.0);
  // At 19 s the samples of 4 s and 8 s are both over 10 s old; 8 s is the base.
  EXPECT_DOUBLE_EQ(scan(tracker, row("x", 8 * second + 11 * second / 2), 19).cpu, 0.5);
  EXPECT_EQ(tracker.samples["x"].front().at, at(8));
}

TEST(TrackerTest, ConnectedGradleClientMeansBuilding) {
  Tracker tracker;
  Item gradle = row("gradle:1", 0, Item::Kind::gradle);
  gradle.inbound = 1;
  Item server = row("server:2", 0);
  server.inbound = 1;
  const auto items = tracker.update({gradle, server}, at(0));
  EXPECT_TRUE(items[0].building);
  EXPECT_FALSE(items[1].building);
}

TEST(TrackerTest, IdleAfterTenQuietMinutesUntilTheNextSpike) {
  Tracker tracker;
  scan(tracker, row("db:5", 0), 0);
  EXPECT_FALSE(scan(tracker, row("db:5", 0), 300).idleSince);
  const Item idle = scan(tracker, row("db:5", 0), 600);
  EXPECT_EQ(idle.idleSince, at(0));
  EXPECT_FALSE(idle.building);

  // Measured from the 300 s sample, the newest at least 10 s old: 5 s over 310 s is above 0.01 cores.
  const Item woke = scan(tracker, row("db:5", 5 * second), 610);
  EXPECT_GT(woke.cpu, 0.01);
  EXPECT_FALSE(woke.idleSince);
  EXPECT_EQ(tracker.lastActive["db:5"], at(610));

  // Connections keep a row active without CPU.
  Item served = row("db:5", 5 * second);
  served.inbound = 2;
  EXPECT_FALSE(scan(tracker, served, 1300).idleSince);
}

TEST(TrackerTest, GoneRowsAreForgotten) {
  Tracker tracker;
  tracker.update({row("a", 0), row("b", 0)}, at(0));
  tracker.update({row("a", 0), row("b", 0)}, at(700));
  tracker.update({row("a", 0)}, at(701));
  EXPECT_EQ(tracker.samples.count("b"), 0u);
  EXPECT_EQ(tracker.lastActive.count("b"), 0u);

  // Back with the same id: first sight again, active, measured from scratch.
  const Item back = scan(tracker, row("b", 50 * second), 702);
  EXPECT_EQ(back.cpu, 0);
  EXPECT_FALSE(back.idleSince);
  EXPECT_EQ(tracker.samples["b"].size(), 1u);
}

TEST(TrackerTest, RowsWithoutProcessesPassUntouched) {
  Tracker tracker;
  Item container;
  container.id = "container:a1";
  container.kind = Item::Kind::container;
  container.cpu = 0.7;
  const auto items = tracker.update({container}, at(0));
  EXPECT_EQ(items[0], container);
  EXPECT_THAT(tracker.samples, IsEmpty());
  EXPECT_THAT(tracker.lastActive, IsEmpty());
}

}  // namespace
}  // namespace corvane
