#pragma once
// The working state of one classification run.
#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "detect/item.h"
#include "detect/world.h"

namespace corvane {

struct Detection {
  World world;
  std::unordered_map<int32_t, const Proc*> procs;              // into world.snapshot.procs
  std::unordered_map<int32_t, std::vector<int32_t>> children;  // direct children by parent pid
  std::vector<const Proc*> all;                                // every process, by pid ascending
  std::unordered_set<int32_t> claimed;                         // pids owned by an item
  std::vector<Item> items;                                     // in the order they were made
};

}  // namespace corvane
