// The order of a classification run: the specific classifiers claim their process trees before the
// generic ones see them, and agents are held back so that what they started gets rows of its own.
#include "detect/pipeline.h"

#include <algorithm>

#include "detect/classifiers.h"

namespace corvane {

namespace {

// The run keeps a copy of its world; made in pid order, the copy lies in memory in the order every
// pass walks it, which is what keeps a large table fast.
World copyInPidOrder(const World& world) {
  std::vector<const Proc*> order;
  order.reserve(world.snapshot.procs.size());
  for (const Proc& p : world.snapshot.procs) order.push_back(&p);
  std::stable_sort(order.begin(), order.end(), [](const Proc* a, const Proc* b) { return a->pid < b->pid; });
  World copy;
  copy.snapshot.taken = world.snapshot.taken;
  copy.snapshot.procs.reserve(order.size());
  for (const Proc* p : order) copy.snapshot.procs.push_back(*p);
  copy.simulators = world.simulators;
  copy.containers = world.containers;
  return copy;
}

}  // namespace

std::vector<Item> detect(const World& world) {
  Detection d(copyInPidOrder(world));
  // Held back before any tree is claimed, so that no row but an agent's ever owns an agent's process.
  const std::vector<int32_t> agents = reserveAgents(d);
  addSimulators(d);
  addSimulatorApps(d);
  addEmulators(d);
  addDockerEngines(d);
  addContainers(d);
  addKotlinDaemons(d);
  addGradleDaemons(d);
  addXcodeServices(d);
  addBundlers(d);
  addDatabases(d);
  addTunnels(d);
  addDevServers(d);
  addAgents(d, agents);
  return std::move(d.items);
}

}  // namespace corvane
