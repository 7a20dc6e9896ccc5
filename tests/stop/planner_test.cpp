#include "stop/planner.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

Item row(std::string id, Item::Kind kind, uint64_t memory, bool idle) {
  Item item;
  item.id = std::move(id);
  item.kind = kind;
  item.memory = memory;
  if (idle) item.idleSince = dateFromSeconds(1'700'000'000);
  return item;
}

std::vector<std::string> ids(const std::vector<Item>& items) {
  std::vector<std::string> result;
  for (const Item& item : items) result.push_back(item.id);
  return result;
}

TEST(PlannerTest, TargetIsAFloor) {
  const std::vector<Item> candidates = {row("small", Item::Kind::server, 1'000'000'000, true),
                                        row("big", Item::Kind::server, 1'500'000'000, true)};
  EXPECT_EQ(ids(planFree(candidates, 2'000'000'000)), (std::vector<std::string>{"big", "small"}));
  EXPECT_EQ(ids(planFree(candidates, 1'500'000'000)), std::vector<std::string>{"big"});  // equal total stops
  EXPECT_EQ(ids(planFree(candidates, 1)), std::vector<std::string>{"big"});
  EXPECT_EQ(ids(planFree(candidates, 9'000'000'000)), (std::vector<std::string>{"big", "small"}));
  EXPECT_TRUE(planFree({}, 1).empty());
}

TEST(PlannerTest, IdleFirstThenBiggestAndScanOrderOnTies) {
  const std::vector<Item> candidates = {
      row("gradle", Item::Kind::gradle, 4'000'000'000, false),
      row("server", Item::Kind::server, 300'000'000, true),
      row("busy-server", Item::Kind::server, 9'000'000'000, false),  // neither idle nor always freeable
      row("sim-a", Item::Kind::simulator, 2'000'000'000, false),
      row("kotlin-a", Item::Kind::kotlin, 500'000'000, true),
      row("kotlin-b", Item::Kind::kotlin, 500'000'000, true),
  };
  EXPECT_EQ(ids(planFree(candidates, 100'000'000'000)),
            (std::vector<std::string>{"kotlin-a", "kotlin-b", "server", "gradle", "sim-a"}));
}

TEST(PlannerTest, UncountedRowsAreNeverPlanned) {
  Item container = row("container:1", Item::Kind::container, 3'000'000'000, true);
  container.counted = false;
  Item simulator = row("sim", Item::Kind::simulator, 2'000'000'000, true);
  simulator.counted = false;
  EXPECT_TRUE(planFree({container, simulator}, 1).empty());
}

}  // namespace
}  // namespace corvane
