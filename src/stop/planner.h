#pragma once
// Which rows to stop to free about a given amount of memory.
#include <array>
#include <cstdint>
#include <vector>

#include "detect/item.h"
#include "stop/policy.h"

namespace corvane {

// Kinds worth reclaiming even before they count as idle.
inline constexpr std::array<Item::Kind, 6> alwaysFreeable = {
    Item::Kind::simulator, Item::Kind::simulatorApp, Item::Kind::emulator,
    Item::Kind::gradle,    Item::Kind::kotlin,       Item::Kind::xcode,
};

// Below this many cores of recent CPU use, a row that nobody connects to counts as quiet.
inline constexpr double quietCores = 0.05;

// Idle enough to plan for: idle for a while, or quiet now (not building, under `quietCores`, no inbound
// connection).
bool isQuiet(const Item& item);

// The rows `free` and the free_memory tool may plan with, in scan order: those `refusal` allows, and quiet.
std::vector<Item> freeCandidates(const std::vector<Item>& items, const Refusal& refusal);

// From candidates the caller already found stoppable and quiet (in scan order): the counted rows that are
// idle or of an always-freeable kind, idle first and biggest first, taken while the running total is below
// `target` bytes. The target is a floor: the last row taken may carry the total past it.
std::vector<Item> planFree(const std::vector<Item>& candidates, uint64_t target);

}  // namespace corvane
