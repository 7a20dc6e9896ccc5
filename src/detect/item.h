#pragma once
// The rows of the dev stack and the values detection works with.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/date.h"

namespace corvane {

// How a row is stopped.
struct Stop {
  struct Simulator {
    std::string udid;
    bool previews = false;
    bool operator==(const Simulator&) const = default;
  };
  struct Emulator {
    std::optional<std::string> serial;
    bool operator==(const Emulator&) const = default;
  };
  struct Containers {
    std::vector<std::string> ids;
    bool operator==(const Containers&) const = default;
  };
  struct Signal {
    bool operator==(const Signal&) const = default;
  };

  std::variant<Simulator, Emulator, Containers, Signal> method = Signal{};

  static Stop simulator(std::string udid, bool previews) { return {Simulator{std::move(udid), previews}}; }
  static Stop emulator(std::optional<std::string> serial) { return {Emulator{std::move(serial)}}; }
  static Stop containers(std::vector<std::string> ids) { return {Containers{std::move(ids)}}; }
  static Stop signal() { return {Signal{}}; }

  template <class T>
  const T* as() const { return std::get_if<T>(&method); }

  bool operator==(const Stop&) const = default;
};

struct Item {
  enum class Kind {
    simulator,
    simulatorApp,
    emulator,
    gradle,
    kotlin,
    xcode,
    bundler,
    docker,
    container,
    database,
    tunnel,
    server,
    agent,
  };

  // Every member has its default, so that a designated initializer may leave out any of them.
  std::string id{};
  std::string key{};
  Kind kind = Kind::server;
  std::string title{};
  std::optional<std::string> cwd{};
  std::optional<std::string> project{};
  std::optional<std::string> startedBy{};
  std::optional<int32_t> agentPID{};
  std::vector<int32_t> pids{};
  uint64_t memory = 0;
  bool counted = true;
  std::optional<Date> started{};
  std::vector<uint16_t> ports{};
  int64_t inbound = 0;
  std::optional<Stop> stop{};
  bool guarded = false;
  uint64_t cpuTimeNanoseconds = 0;  // of all its processes since they started
  double cpuCores = 0;              // recent use, in cores; the tracker fills it in
  bool building = false;
  std::optional<Date> idleSince{};

  bool operator==(const Item&) const = default;
};

// The memory a row adds to the dev stack: none for rows counted elsewhere (containers inside an engine).
inline uint64_t countedMemory(const Item& item) { return item.counted ? item.memory : 0; }

struct KindName {
  Item::Kind kind;
  std::string_view name;  // the raw value of the JSON forms
};

// Every kind with its name, in the order of the enumeration.
inline constexpr std::array<KindName, 13> kindNames = {{
    {Item::Kind::simulator, "simulator"}, {Item::Kind::simulatorApp, "simulatorApp"},
    {Item::Kind::emulator, "emulator"},   {Item::Kind::gradle, "gradle"},
    {Item::Kind::kotlin, "kotlin"},       {Item::Kind::xcode, "xcode"},
    {Item::Kind::bundler, "bundler"},     {Item::Kind::docker, "docker"},
    {Item::Kind::container, "container"}, {Item::Kind::database, "database"},
    {Item::Kind::tunnel, "tunnel"},       {Item::Kind::server, "server"},
    {Item::Kind::agent, "agent"},
}};

inline constexpr std::array<Item::Kind, kindNames.size()> allKinds = [] {
  std::array<Item::Kind, kindNames.size()> kinds{};
  for (size_t i = 0; i < kinds.size(); ++i) kinds[i] = kindNames[i].kind;
  return kinds;
}();

std::string_view rawValue(Item::Kind kind);
std::optional<Item::Kind> kindFromRawValue(std::string_view raw);

// An emulator row's key is "avd:" and the name of its virtual device, the name that relaunches it.
std::string avdKey(std::string_view avdName);
// The virtual device's name in an emulator row's key; absent for any other key.
std::optional<std::string> avdNameFromKey(std::string_view key);

// One running Docker container as `docker ps` and `docker stats` describe it.
struct Container {
  std::string id;
  std::string name;
  std::string image;
  std::optional<std::string> project;
  uint64_t memory = 0;

  bool operator==(const Container&) const = default;
};

nlohmann::json toJSON(const Stop& stop);
// Dates in whole seconds: this is the form the command line prints.
nlohmann::json toJSON(const Item& item);
nlohmann::json toJSON(const Container& container);

}  // namespace corvane
