#include "scanner/containers.h"

#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <map>
#include <string>

#include "base/json_fields.h"
#include "base/lines.h"
#include "base/utf8.h"
#include "platform/docker_socket.h"

namespace corvane {

namespace {

constexpr std::string_view composeProjectLabel = "com.docker.compose.project";

// The used half of "1.5GiB / 7.7GiB".
uint64_t usedMemory(std::string_view memUsage) {
  while (!memUsage.empty() && memUsage.front() == '/') memUsage.remove_prefix(1);
  return parseMemorySize(memUsage.substr(0, memUsage.find('/')));
}

std::map<std::string, uint64_t> memoryByContainer(std::string_view statsOutput) {
  std::map<std::string, uint64_t> memory;
  for (const auto& object : parseJSONLines(statsOutput)) {
    const std::string* id = jsonString(object, "ID");
    const std::string* usage = jsonString(object, "MemUsage");
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
    const std::string* id = jsonString(object, "ID");
    const std::string* names = jsonString(object, "Names");
    if (!id || !names) continue;
    const std::string* image = jsonString(object, "Image");
    const std::string* labels = jsonString(object, "Labels");
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

std::vector<nlohmann::json> parseJSONLines(std::string_view bytes) {
  const std::string text = repairedUTF8(bytes);
  std::vector<nlohmann::json> objects;
  for (const std::string_view line : splitLines(text)) {
    if (line.empty()) continue;
    auto value = nlohmann::json::parse(line.begin(), line.end(), nullptr, false);
    if (value.is_object()) objects.push_back(std::move(value));
  }
  return objects;
}

namespace {

struct Unit {
  std::string_view suffix;
  double factor;
};

// Tried in this order, so that "KiB" is not read as "B" and "kB" not as "B".
constexpr std::array<Unit, 9> units = {{
    {"KiB", 1024.0},
    {"MiB", 1048576.0},
    {"GiB", 1073741824.0},
    {"TiB", 1099511627776.0},
    {"kB", 1e3},
    {"MB", 1e6},
    {"GB", 1e9},
    {"TB", 1e12},
    {"B", 1.0},
}};

std::string_view trimSpacesAndTabs(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// The whole text as a decimal number, or 0. strtod would skip leading white space; a number
// must start right away.
double parseNumber(std::string_view text) {
  if (text.empty() || std::isspace(static_cast<unsigned char>(text.front()))) return 0;
  const std::string copy(text);
  char* end = nullptr;
  const double value = std::strtod(copy.c_str(), &end);
  return end == copy.c_str() + copy.size() ? value : 0;
}

}  // namespace

uint64_t parseMemorySize(std::string_view text) {
  const std::string_view trimmedText = trimSpacesAndTabs(text);
  for (const Unit& unit : units) {
    if (!trimmedText.ends_with(unit.suffix)) continue;
    const double bytes = parseNumber(trimmedText.substr(0, trimmedText.size() - unit.suffix.size())) * unit.factor;
    if (!std::isfinite(bytes) || bytes <= 0) return 0;
    if (bytes >= 18446744073709551616.0) return UINT64_MAX;
    return static_cast<uint64_t>(bytes);
  }
  return 0;
}

}  // namespace corvane
