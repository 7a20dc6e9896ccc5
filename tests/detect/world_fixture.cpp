#include "detect/world_fixture.h"

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

namespace corvane::testing {

World loadWorld(const std::string& name) {
  World world;
  const std::string path = std::string(CORVANE_FIXTURES) + "/" + name;
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  const auto json = nlohmann::json::parse(text.str(), nullptr, false);
  if (json.is_discarded()) {
    ADD_FAILURE() << path << " is not JSON";
    return world;
  }
  auto snapshot = decodeSnapshot(json);
  if (!snapshot) {
    ADD_FAILURE() << path << ": " << snapshot.error;
    return world;
  }
  world.snapshot = std::move(*snapshot.value);
  if (json.contains("simulators")) world.simulators = json["simulators"].get<std::map<std::string, std::string>>();
  if (json.contains("containers")) {
    for (const auto& entry : json["containers"]) {
      auto container = decodeContainer(entry);
      if (!container) ADD_FAILURE() << path << ": " << container.error;
      else world.containers.push_back(std::move(*container.value));
    }
  }
  return world;
}

Proc makeProc(int32_t pid, int32_t ppid, const std::string& path, std::vector<std::string> args,
              const std::string& cwd, std::vector<uint16_t> listening) {
  Proc p;
  p.pid = pid;
  p.ppid = ppid;
  p.path = path;
  p.name = lastPathComponent(path);
  p.args = std::move(args);
  p.cwd = cwd;
  p.listening = std::move(listening);
  return p;
}

World worldOf(std::vector<Proc> procs) {
  World world;
  world.snapshot.procs = std::move(procs);
  return world;
}

const Item* findItem(const std::vector<Item>& items, const std::string& id) {
  for (const auto& item : items)
    if (item.id == id) return &item;
  return nullptr;
}

std::vector<std::string> idsOf(const std::vector<Item>& items) {
  std::vector<std::string> ids;
  for (const auto& item : items) ids.push_back(item.id);
  return ids;
}

}  // namespace corvane::testing
