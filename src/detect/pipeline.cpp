// The order of a classification run: the specific classifiers claim their process trees before the
// generic ones see them, and agents are held back so that what they started gets rows of its own.
#include "detect/pipeline.h"

#include "detect/classifiers.h"

namespace corvane {

std::vector<Item> detect(const World& world) {
  Detection d(world);
  addSimulators(d);
  addSimulatorApps(d);
  addEmulators(d);
  addDockerEngines(d);
  addContainers(d);
  addKotlinDaemons(d);
  addGradleDaemons(d);
  addXcodeServices(d);
  const std::vector<int32_t> agents = reserveAgents(d);
  addBundlers(d);
  addDatabases(d);
  addTunnels(d);
  addDevServers(d);
  addAgents(d, agents);
  return std::move(d.items);
}

}  // namespace corvane
