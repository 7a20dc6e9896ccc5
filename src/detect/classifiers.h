#pragma once
// The steps of a classification run, in the files named for them. Each walks `all` once.
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "detect/agents.h"
#include "detect/detection.h"

namespace corvane {

void addSimulators(Detection& d);
void addSimulatorApps(Detection& d);
void addEmulators(Detection& d);
void addDockerEngines(Detection& d);
void addContainers(Detection& d);
void addKotlinDaemons(Detection& d);
void addGradleDaemons(Detection& d);
void addXcodeServices(Detection& d);
// Keeps agent processes out of every other classifier; returns them in pid order.
std::vector<int32_t> reserveAgents(Detection& d);
void addBundlers(Detection& d);
void addDatabases(Detection& d);
void addTunnels(Detection& d);
void addDevServers(Detection& d);
void addAgents(Detection& d, const std::vector<int32_t>& reserved);

// The Docker engine a process is part of by its own path or name ("OrbStack", "Docker Desktop", "Colima",
// "Docker Engine"); the engines' virtual machines are found through the engine responsible for them.
std::optional<std::string_view> dockerEngineName(const Proc& p);

}  // namespace corvane
