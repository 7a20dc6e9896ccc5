#pragma once
// One process of the user, and the user's process table at one moment.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/date.h"
#include "base/decoded.h"

namespace corvane {

struct Proc {
  int32_t pid = 0;
  int32_t ppid = 0;
  std::string path{};
  std::vector<std::string> args{};  // args[0] included
  std::string cwd = "/";
  uint64_t footprint = 0;  // bytes
  uint64_t cpuTimeNanoseconds = 0;  // user plus system time
  Date started{};
  std::vector<uint16_t> listening{};  // ascending, no duplicates
  int64_t inbound = 0;              // established connections on a listening port
  std::optional<int32_t> responsible{};
  std::string name{};  // last path component of `path`

  bool operator==(const Proc&) const = default;
};

struct Snapshot {
  std::vector<Proc> procs;  // in the kernel's order
  Date taken{};

  bool operator==(const Snapshot&) const = default;
};

// When each process of a snapshot started, by pid: what tells a process from a later one that has
// been given the same pid.
using StartTimes = std::unordered_map<int32_t, Date>;
StartTimes startTimes(const Snapshot& snapshot);

// The last component of a path: "node" for "/usr/bin/node", "" for "" and for a path ending in "/".
std::string_view lastPathComponent(std::string_view path);

nlohmann::json toJSON(const Proc& proc);
nlohmann::json toJSON(const Snapshot& snapshot);
Decoded<Proc> decodeProc(const nlohmann::json& json);
Decoded<Snapshot> decodeSnapshot(const nlohmann::json& json);

}  // namespace corvane
