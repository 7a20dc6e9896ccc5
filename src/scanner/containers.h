#pragma once
// Turning `docker ps` and `docker stats` output into the running containers.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "detect/item.h"

namespace corvane {

// The Compose project in a container's comma-separated labels; absent when there is none or the
// label has no value.
std::optional<std::string> composeProject(std::string_view labels);

struct DockerTimeouts {
  double ps = 5;
  double stats = 10;
};

// Runs `docker ps` and `docker stats` through `docker`. Empty when ps fails or either does not end by
// itself in time.
std::vector<Container> fetchContainers(const std::string& docker, DockerTimeouts timeouts = {});

// Containers in the order of the `docker ps` lines, each with the memory of its `docker stats` line
// (0 without one).
std::vector<Container> containersFromDockerOutput(std::string_view psOutput, std::string_view statsOutput);

}  // namespace corvane
