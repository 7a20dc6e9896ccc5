#include "scanner/containers.h"

#include <cstdio>

#include "base/json_fields.h"
#include "platform/unix_http.h"

namespace corvane {

namespace {

using nlohmann::json;
using platform::HttpAnswer;

uint64_t unsignedField(const json& object, const char* key) {
  const auto it = object.find(key);
  return it != object.end() && it->is_number_unsigned() ? it->get<uint64_t>() : 0;
}

// `docker ps` shows a container's names without their leading "/", joined by commas.
std::string joinedNames(const json& listed) {
  std::string names;
  const auto it = listed.find("Names");
  if (it == listed.end() || !it->is_array()) return names;
  for (const auto& name : *it) {
    if (!name.is_string()) continue;
    const auto& text = name.get_ref<const std::string&>();
    if (!names.empty()) names += ',';
    names += text.starts_with('/') ? text.substr(1) : text;
  }
  return names;
}

// The labels as `docker ps` prints them: key=value pairs joined by commas.
std::string joinedLabels(const json& listed) {
  std::string labels;
  const auto it = listed.find("Labels");
  if (it == listed.end() || !it->is_object()) return labels;
  for (const auto& [key, value] : it->items()) {
    if (!value.is_string()) continue;
    if (!labels.empty()) labels += ',';
    labels += key + "=" + value.get_ref<const std::string&>();
  }
  return labels;
}

// What `docker stats` shows as used: the usage without the page cache that could be dropped at once
// (cgroup v1 names it total_inactive_file, v2 inactive_file), printed in binary units with four
// significant digits. The figure is read back from that text, so that both ways give the same bytes.
uint64_t statsMemory(const json& stats) {
  const auto memory = stats.find("memory_stats");
  if (memory == stats.end() || !memory->is_object()) return 0;
  const uint64_t usage = unsignedField(*memory, "usage");
  uint64_t used = usage;
  if (const auto details = memory->find("stats"); details != memory->end() && details->is_object()) {
    const bool cgroup1 = details->contains("total_inactive_file");
    const uint64_t cgroup1Inactive = unsignedField(*details, "total_inactive_file");
    const uint64_t inactive = unsignedField(*details, "inactive_file");
    if (cgroup1 && cgroup1Inactive < usage) {
      used = usage - cgroup1Inactive;
    } else if (inactive < usage) {
      used = usage - inactive;
    }
  }
  static constexpr const char* units[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  double size = static_cast<double>(used);
  size_t unit = 0;
  while (size >= 1024 && unit + 1 < std::size(units)) {
    size /= 1024;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, "%.4g%s", size, units[unit]);
  return parseMemorySize(text);
}

}  // namespace

Container containerFromEngine(const json& listed, const json& stats) {
  const std::string* image = jsonString(listed, "Image");
  return Container{*jsonString(listed, "Id"), joinedNames(listed),
                   image && !image->empty() ? *image : std::string("<no image>"),
                   composeProject(joinedLabels(listed)), stats.is_object() ? statsMemory(stats) : 0};
}

std::optional<std::vector<Container>> fetchEngineContainers(const std::string& socket, DockerTimeouts timeouts) {
  const auto listing = platform::getOverUnixSocket(socket, {"/containers/json"}, timeouts.ps).front();
  if (listing.state == HttpAnswer::State::unreachable) return std::nullopt;
  if (listing.state != HttpAnswer::State::answered || listing.status != 200) return std::vector<Container>();
  const json listed = json::parse(listing.body, nullptr, false);
  if (!listed.is_array()) return std::vector<Container>();
  std::vector<const json*> running;
  std::vector<std::string> paths;
  for (const auto& object : listed) {
    if (!object.is_object() || !jsonString(object, "Id")) continue;
    running.push_back(&object);
    // One sample, not the two that CPU use needs: memory is all that is read.
    paths.push_back("/containers/" + *jsonString(object, "Id") + "/stats?stream=false&one-shot=true");
  }
  const auto answers = platform::getOverUnixSocket(socket, paths, timeouts.stats);
  std::vector<Container> containers;
  for (size_t i = 0; i < running.size(); ++i) {
    const HttpAnswer& answer = answers[i];
    // As when `docker stats` does not end in time: the engine is in no state to be trusted.
    if (answer.state == HttpAnswer::State::timedOut) return std::vector<Container>();
    const bool usable = answer.state == HttpAnswer::State::answered && answer.status == 200;
    containers.push_back(containerFromEngine(*running[i], usable ? json::parse(answer.body, nullptr, false) : json()));
  }
  return containers;
}

}  // namespace corvane
