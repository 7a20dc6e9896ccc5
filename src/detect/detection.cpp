#include "detect/detection.h"

#include <algorithm>

namespace corvane {

Detection::Detection(World w) : world(std::move(w)) {
  const auto& list = world.snapshot.procs;
  procs.reserve(list.size());
  children.reserve(list.size());
  // Sorting the pids beside their records spares a pointer chase per comparison.
  std::vector<std::pair<int32_t, const Proc*>> byPid;
  byPid.reserve(list.size());
  for (const Proc& p : list) {
    procs.emplace(p.pid, &p);
    children[p.ppid].push_back(p.pid);
    byPid.emplace_back(p.pid, &p);
  }
  if (!std::is_sorted(byPid.begin(), byPid.end())) std::sort(byPid.begin(), byPid.end());
  all.reserve(byPid.size());
  for (const auto& [pid, p] : byPid) all.push_back(p);
}

const Proc* Detection::proc(int32_t pid) const {
  const auto it = procs.find(pid);
  return it == procs.end() ? nullptr : it->second;
}

std::vector<int32_t> Detection::claim(int32_t pid) {
  std::vector<int32_t> result;
  if (isClaimed(pid)) return result;
  // Claiming before pushing children is also what ends the walk on a ppid cycle.
  std::vector<int32_t> stack{pid};
  while (!stack.empty()) {
    const int32_t current = stack.back();
    stack.pop_back();
    if (!claimed.insert(current).second) continue;
    result.push_back(current);
    const auto kids = children.find(current);
    if (kids != children.end()) stack.insert(stack.end(), kids->second.begin(), kids->second.end());
  }
  return result;
}

std::vector<int32_t> Detection::unclaimedDescendants(int32_t pid) const {
  std::vector<int32_t> result;
  // Nothing is claimed here, so a ppid cycle is cut by remembering what was seen.
  std::unordered_set<int32_t> seen{pid};
  std::vector<int32_t> stack;
  const auto push = [&](int32_t parent) {
    const auto kids = children.find(parent);
    if (kids != children.end()) stack.insert(stack.end(), kids->second.begin(), kids->second.end());
  };
  push(pid);
  while (!stack.empty()) {
    const int32_t current = stack.back();
    stack.pop_back();
    if (isClaimed(current) || !seen.insert(current).second) continue;
    result.push_back(current);
    push(current);
  }
  return result;
}

Item Detection::owning(std::vector<int32_t> pids) {
  Item item;
  bool first = true;
  for (const int32_t pid : pids) {
    const Proc* p = proc(pid);
    if (!p) continue;
    if (first) item.started = p->started;
    first = false;
    item.memory += p->footprint;
    item.cpuTimeNanoseconds += p->cpuTimeNanoseconds;
    item.inbound += p->inbound;
    item.ports.insert(item.ports.end(), p->listening.begin(), p->listening.end());
  }
  std::sort(item.ports.begin(), item.ports.end());
  item.ports.erase(std::unique(item.ports.begin(), item.ports.end()), item.ports.end());
  if (!pids.empty()) {
    Launcher by = launcher(pids.front());
    item.startedBy = std::move(by.startedBy);
    item.agentPID = by.agentPID;
  }
  item.pids = std::move(pids);
  return item;
}

void Detection::add(Item::Kind kind, std::string id, std::string key, std::string title, int32_t pid,
                    std::optional<std::string> cwd, std::optional<Stop> stop, Guard guard) {
  Item item = owning(claim(pid));
  item.kind = kind;
  item.id = std::move(id);
  item.key = std::move(key);
  item.title = std::move(title);
  item.cwd = std::move(cwd);
  item.stop = std::move(stop);
  item.guarded = guard == Guard::guarded;
  // A session started from the app of the same name says nothing new by naming it.
  if (item.startedBy == item.title) item.startedBy.reset();
  const bool showsPort =
      kind == Item::Kind::bundler || kind == Item::Kind::server || kind == Item::Kind::database;
  if (showsPort && !item.ports.empty()) item.title += " :" + std::to_string(item.ports.front());
  items.push_back(std::move(item));
}

}  // namespace corvane
