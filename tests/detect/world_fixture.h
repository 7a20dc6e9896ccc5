#pragma once
// Worlds for the detection tests: JSON fixtures (a snapshot with "simulators" and "containers" beside
// "procs") and processes made in code for the small cases.
#include <cstdint>
#include <string>
#include <vector>

#include "detect/item.h"
#include "detect/world.h"

namespace corvane::testing {

// The fixture of that name in tests/fixtures; fails the test when it cannot be read.
World loadWorld(const std::string& name);

// A process with the given parent, executable and arguments; the rest is blank or zero.
Proc makeProc(int32_t pid, int32_t ppid, const std::string& path, std::vector<std::string> args = {},
              const std::string& cwd = "/", std::vector<uint16_t> listening = {});
World worldOf(std::vector<Proc> procs);

// The first item with that id, or null.
const Item* findItem(const std::vector<Item>& items, const std::string& id);
std::vector<std::string> idsOf(const std::vector<Item>& items);

}  // namespace corvane::testing
