// Docker engines with the virtual machines they run, and the containers the scanner found.
#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <string>

#include "detect/classifiers.h"
#include "detect/text.h"

namespace corvane {

namespace {

// Substrings of a lower-cased image reference that make a container a database.
constexpr std::array<std::string_view, 22> databaseImages = {
    "postgres", "redis",         "mysql",      "mariadb",   "mongo",   "valkey",   "supabase/postgres", "timescale",
    "pgvector", "postgis",       "clickhouse", "elasticsearch", "opensearch", "cassandra", "couchdb",   "neo4j",
    "influxdb", "cockroach",     "minio",      "rabbitmq",  "kafka",   "redpanda",
};

}  // namespace

std::optional<std::string_view> dockerEngineName(const Proc& p) {
  if (contains(p.path, "/OrbStack.app/")) return "OrbStack";
  if (contains(p.path, "/Docker.app/")) return "Docker Desktop";
  if (contains(p.path, "/docker-desktop/")) return "Docker Desktop";  // Docker Desktop for Linux
  if (p.name == "limactl" || p.name == "colima") return "Colima";
  if (p.name == "dockerd") return "Docker Engine";  // rootless Docker, the only engine a user's table shows
  return std::nullopt;
}

namespace {

std::optional<std::string_view> engineName(const Detection& d, const Proc& p) {
  if (auto own = dockerEngineName(p)) return own;
  // The system's virtual machine host runs each engine's VM; the system holds the engine responsible for it.
  if (!contains(p.path, "com.apple.Virtualization.VirtualMachine") || !p.responsible) return std::nullopt;
  const Proc* engine = d.proc(*p.responsible);
  return engine ? dockerEngineName(*engine) : std::nullopt;
}

std::string lowercased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

}  // namespace

void addDockerEngines(Detection& d) {
  std::map<std::string_view, std::vector<int32_t>> engines;  // ascending by engine name
  for (const Proc* p : d.all)
    if (auto name = engineName(d, *p)) engines[*name].push_back(p->pid);

  for (const auto& [name, members] : engines) {
    std::vector<int32_t> pids;
    for (const int32_t pid : members) {
      const auto tree = d.claim(pid);
      pids.insert(pids.end(), tree.begin(), tree.end());
    }
    Item item = d.owning(std::move(pids));
    item.kind = Item::Kind::docker;
    item.id = item.key = "docker:" + std::string(name);
    item.title = std::string(name);
    d.items.push_back(std::move(item));
  }
}

void addContainers(Detection& d) {
  for (const Container& c : d.world.containers) {
    Item item;
    item.kind = Item::Kind::container;
    item.id = "container:" + c.id;
    item.key = "container:" + c.name;
    item.title = c.name;
    item.project = c.project;
    item.memory = c.memory;
    // The engine's virtual machine already holds this memory.
    item.counted = false;
    item.stop = Stop::containers({c.id});
    const std::string image = lowercased(c.image);
    item.guarded = std::any_of(databaseImages.begin(), databaseImages.end(),
                               [&](std::string_view word) { return contains(image, word); });
    d.items.push_back(std::move(item));
  }
}

}  // namespace corvane
