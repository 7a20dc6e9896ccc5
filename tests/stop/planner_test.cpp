#include "stop/planner.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

Item row(std::string id, Item::Kind kind, uint64_t memory, bool idle) {
  Item item{.id = std::move(id), .kind = kind, .memory = memory};
  if (idle) item.idleSince = dateFromSeconds(1'700'000'000);
  return item;
}

std::vector<std::string> plan(const std::vector<Item>& candidates, uint64_t target) {
  std::vector<std::string> ids;
  for (const Item& item : planFree(candidates, target)) ids.push_back(item.id);
  return ids;
}

using Ids = std::vector<std::string>;

// Candidates are the quiet rows the caller's rule lets go: idle, or not building, under the CPU bar
// and serving no connection. Of those, idle rows go first, then the biggest of the kinds always worth
// freeing, until the target is reached: it is a floor.
TEST(PlannerTest, QuietCandidatesIdleFirstThenBiggestCountedOnlyUpToTheTarget) {
  Item container = row("container", Item::Kind::container, 8'000'000'000, true);
  container.counted = false;
  Item busy = row("busy", Item::Kind::gradle, 9'000'000'000, false);
  busy.cpuCores = quietCores;
  Item serving = row("serving", Item::Kind::simulator, 9'000'000'000, false);
  serving.inbound = 1;
  Item building = row("building", Item::Kind::kotlin, 9'000'000'000, false);
  building.building = true;
  Item idleServing = row("idle-serving", Item::Kind::server, 400'000'000, true);
  idleServing.inbound = 1;
  const std::vector<Item> rows = {
      row("gradle", Item::Kind::gradle, 4'000'000'000, false), row("server", Item::Kind::server, 300'000'000, true),
      row("big", Item::Kind::server, 9'000'000'000, false),    row("sim", Item::Kind::simulator, 2'000'000'000, false),
      row("kotlin-a", Item::Kind::kotlin, 500'000'000, true),  row("kotlin-b", Item::Kind::kotlin, 500'000'000, true),
      row("pinned", Item::Kind::kotlin, 9'000'000'000, true),  container, busy, serving, building, idleServing,
  };
  const auto refusal = [](const Item& item) {
    return item.id == "pinned" ? std::optional<std::string>("pinned") : std::nullopt;
  };
  const std::vector<Item> candidates = freeCandidates(rows, refusal);
  EXPECT_EQ(plan(candidates, 100'000'000'000),
            (Ids{"kotlin-a", "kotlin-b", "idle-serving", "server", "gradle", "sim"}));
  EXPECT_EQ(plan(candidates, 1'700'000'000), (Ids{"kotlin-a", "kotlin-b", "idle-serving", "server"}));
  EXPECT_EQ(plan(candidates, 1'700'000'001), (Ids{"kotlin-a", "kotlin-b", "idle-serving", "server", "gradle"}));
}

}  // namespace
}  // namespace corvane
