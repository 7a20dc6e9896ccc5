#pragma once
// The four tools an agent can call, and how a call's arguments are read.
#include <cstdint>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace corvane::MCP {

struct Call {
  enum class Kind { stop, freeMemory, findFreePort, listRunning };
  Kind kind = Kind::listRunning;
  std::string target;    // stop
  double gb = 0;         // freeMemory
  bool dryRun = false;   // freeMemory
  uint16_t start = 3000; // findFreePort
};

struct Reply {
  std::string text;
  bool isError = false;
};

// The tools/list result array, in order: list_running, stop, free_memory, find_free_port.
const nlohmann::json& tools();
bool isTool(const std::string& name);

// Absent when the arguments don't fit the tool's schema.
std::optional<Call> parse(const std::string& name, const nlohmann::json& arguments);

}  // namespace corvane::MCP
