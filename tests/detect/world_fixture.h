#pragma once
// Worlds for the detection tests: JSON fixtures (a snapshot with "simulators" and "containers" beside
// "procs") and processes made in code for the small cases.
#include <cstdint>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "detect/item.h"
#include "support/item_decoding.h"
#include "detect/world.h"

namespace corvane::testing {

// The fixture of that name in tests/fixtures; fails the test when it cannot be read.
inline World loadWorld(const std::string& name) {
  const auto json = nlohmann::json::parse(std::ifstream(std::string(CORVANE_FIXTURES) + "/" + name));
  World world{.simulators = json.value("simulators", std::map<std::string, std::string>())};
  auto snapshot = decodeSnapshot(json);
  if (snapshot) world.snapshot = std::move(*snapshot.value);
  else ADD_FAILURE() << name << ": " << snapshot.error;
  for (const auto& entry : json.value("containers", nlohmann::json::array())) {
    auto container = decodeContainer(entry);
    if (!container) ADD_FAILURE() << name << ": " << container.error;
    else world.containers.push_back(std::move(*container.value));
  }
  return world;
}

// A process with the given parent, executable and arguments; the rest is blank or zero.
inline Proc makeProc(int32_t pid, int32_t ppid, const std::string& path, std::vector<std::string> args = {},
                     const std::string& cwd = "/", std::vector<uint16_t> listening = {}) {
  return {.pid = pid, .ppid = ppid, .path = path, .args = std::move(args), .cwd = cwd,
          .listening = std::move(listening), .name = std::string(lastPathComponent(path))};
}

inline World worldOf(std::vector<Proc> procs) { return {.snapshot = {.procs = std::move(procs)}}; }

// The first item with that id, or null.
inline const Item* findItem(const std::vector<Item>& items, const std::string& id) {
  for (const auto& item : items)
    if (item.id == id) return &item;
  return nullptr;
}

}  // namespace corvane::testing
