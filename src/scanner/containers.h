#pragma once
// The running containers, from a Docker engine's API or else from `docker ps` and `docker stats`.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "detect/item.h"
#include "tools/tools.h"

namespace corvane {

// The Compose project in a container's comma-separated labels; absent when there is none or the
// label has no value.
std::optional<std::string> composeProject(std::string_view labels);

// The running containers, from the engine's API when it answers, else through `docker ps` and
// `docker stats`; empty without either.
std::vector<Container> runningContainers(const Tools& tools);

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

// Asks the engine on `socket` for its running containers and each one's memory, with the time-outs of
// the docker runs. Absent when nothing answers on the socket; empty when the engine fails to list
// them or a memory reading does not come in time.
std::optional<std::vector<Container>> fetchEngineContainers(const std::string& socket, DockerTimeouts timeouts = {});

// One container of the engine's list (an object with a string "Id"), with the memory of its stats
// (null when they could not be had), as the docker runs show it.
Container containerFromEngine(const nlohmann::json& listed, const nlohmann::json& stats);

// Output of the form `docker ... --format "{{json .}}"`: one JSON object per line.
// The lines that hold JSON objects, in order; empty lines, unparsable lines and other JSON values
// are skipped. Invalid UTF-8 is replaced first, so one bad byte costs at most its own line's text.
std::vector<nlohmann::json> parseJSONLines(std::string_view bytes);

// Memory sizes as `docker stats` prints them: "1.5GiB", "512MiB", "12.3kB", "0B".
// Bytes, truncated toward zero. Anything without a known unit right after the number, and any
// negative or non-finite number, is 0; a size beyond 64 bits is the largest one.
uint64_t parseMemorySize(std::string_view text);

}  // namespace corvane
