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
#include "detect/world.h"

namespace corvane::testing {

// The fixture of that name in tests/fixtures; fails the test when it cannot be read.
inline World loadWorld(const std::string& name) {
  World world;
  const std::string path = std::string(CORVANE_FIXTURES) + "/" + name;
  std::ifstream in(path);
  const auto json = nlohmann::json::parse(in, nullptr, false);
  auto snapshot = json.is_discarded() ? Decoded<Snapshot>::failure("not JSON") : decodeSnapshot(json);
  if (!snapshot) {
    ADD_FAILURE() << path << ": " << snapshot.error;
    return world;
  }
  world.snapshot = std::move(*snapshot.value);
  world.simulators = json.value("simulators", std::map<std::string, std::string>());
  for (const auto& entry : json.value("containers", nlohmann::json::array())) {
    auto container = decodeContainer(entry);
    if (!container) ADD_FAILURE() << path << ": " << container.error;
    else world.containers.push_back(std::move(*container.value));
  }
  return world;
}

// A process with the given parent, executable and arguments; the rest is blank or zero.
inline Proc makeProc(int32_t pid, int32_t ppid, const std::string& path, std::vector<std::string> args = {},
                     const std::string& cwd = "/", std::vector<uint16_t> listening = {}) {
  return {.pid = pid, .ppid = ppid, .path = path, .args = std::move(args), .cwd = cwd,
          .listening = std::move(listening), .name = lastPathComponent(path)};
}

inline World worldOf(std::vector<Proc> procs) { return {.snapshot = {.procs = std::move(procs)}}; }

// The first item with that id, or null.
inline const Item* findItem(const std::vector<Item>& items, const std::string& id) {
  for (const auto& item : items)
    if (item.id == id) return &item;
  return nullptr;
}

}  // namespace corvane::testing
