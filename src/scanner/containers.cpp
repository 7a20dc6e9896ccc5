#include "scanner/containers.h"

#include <map>

#include "platform/docker_socket.h"
#include "scanner/json_lines.h"
#include "scanner/memory_size.h"

namespace corvane {

namespace {

constexpr std::string_view composeProjectLabel = "com.docker.compose.project";

const std::string* stringField(const nlohmann::json& object, const char* key) {
  const auto it = object.find(key);
  return it != object.end() && it->is_string() ? it->get_ptr<const std::string*>() : nullptr;
}

// The used half of "1.5GiB / 7.7GiB".
uint64_t usedMemory(std::string_view memUsage) {
  while (!memUsage.empty() && memUsage.front() == '/') memUsage.remove_prefix(1);
  return parseMemorySize(memUsage.substr(0, memUsage.find('/')));
}

std::map<std::string, uint64_t> memoryByContainer(std::string_view statsOutput) {
  std::map<std::string, uint64_t> memory;
  for (const auto& object : parseJSONLines(statsOutput)) {
    const std::string* id = stringField(object, "ID");
    const std::string* usage = stringField(object, "MemUsage");
    if (id && usage) memory[*id] = usedMemory(*usage);
  }
  return memory;
}

}  // namespace

std::optional<std::string> composeProject(std::string_view labels) {
  while (!labels.empty()) {
    const size_t comma = labels.find(',');
    const std::string_view piece = labels.substr(0, comma);
    labels = comma == std::string_view::npos ? std::string_view() : labels.substr(comma + 1);
    if (piece.empty()) continue;
    const size_t equals = piece.find('=');
    if (piece.substr(0, equals) != composeProjectLabel) continue;
    if (equals == std::string_view::npos || equals + 1 == piece.size()) return std::nullopt;
    return std::string(piece.substr(equals + 1));
  }
  return std::nullopt;
}

std::vector<Container> containersFromDockerOutput(std::string_view psOutput, std::string_view statsOutput) {
  const auto memory = memoryByContainer(statsOutput);
  std::vector<Container> containers;
  for (const auto& object : parseJSONLines(psOutput)) {
    const std::string* id = stringField(object, "ID");
    const std::string* names = stringField(object, "Names");
    if (!id || !names) continue;
    const std::string* image = stringField(object, "Image");
    const std::string* labels = stringField(object, "Labels");
    const auto used = memory.find(*id);
    containers.push_back(Container{*id, *names, image ? *image : std::string(),
                                   composeProject(labels ? std::string_view(*labels) : std::string_view()),
                                   used == memory.end() ? 0 : used->second});
  }
  return containers;
}

// Either command failing to answer in time means Docker is in no state to be trusted; a stats run
// that ends with an error still says something about the containers it did print.
std::vector<Container> fetchContainers(const std::string& docker, DockerTimeouts timeouts) {
  const auto ps = run(docker, {"ps", "--no-trunc", "--format", "{{json .}}"}, timeouts.ps);
  if (!ps || ps->status != 0) return {};
  const auto stats = run(docker, {"stats", "--no-stream", "--no-trunc", "--format", "{{json .}}"}, timeouts.stats);
  if (!stats) return {};
  return containersFromDockerOutput(ps->data, stats->data);
}

// The engine's API costs no process start; the docker runs remain for an engine reached otherwise.
std::vector<Container> runningContainers(const Tools& tools) {
  if (const auto socket = platform::dockerEngineSocket())
    if (auto containers = fetchEngineContainers(*socket)) return std::move(*containers);
  const std::string* docker = tools.path("docker");
  return docker ? fetchContainers(*docker) : std::vector<Container>{};
}

}  // namespace corvane
