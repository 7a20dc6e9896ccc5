#include "stop/planner.h"

#include <algorithm>

namespace corvane {

namespace {

bool isAlwaysFreeable(Item::Kind kind) {
  return std::find(alwaysFreeable.begin(), alwaysFreeable.end(), kind) != alwaysFreeable.end();
}

}  // namespace

bool isQuiet(const Item& item) {
  return item.idleSince || (!item.building && item.cpuCores < quietCores && item.inbound == 0);
}

std::vector<Item> freeCandidates(const std::vector<Item>& items, const Refusal& refusal) {
  std::vector<Item> candidates;
  for (const Item& item : items)
    if (!refusal(item) && isQuiet(item)) candidates.push_back(item);
  return candidates;
}

std::vector<Item> planFree(const std::vector<Item>& candidates, uint64_t target) {
  std::vector<Item> kept;
  for (const Item& item : candidates)
    if (item.counted && (item.idleSince || isAlwaysFreeable(item.kind))) kept.push_back(item);

  std::stable_sort(kept.begin(), kept.end(), [](const Item& a, const Item& b) {
    if (a.idleSince.has_value() != b.idleSince.has_value()) return a.idleSince.has_value();
    return a.memory > b.memory;
  });

  std::vector<Item> plan;
  uint64_t total = 0;
  for (Item& item : kept) {
    if (total >= target) break;
    total += item.memory;
    plan.push_back(std::move(item));
  }
  return plan;
}

}  // namespace corvane
