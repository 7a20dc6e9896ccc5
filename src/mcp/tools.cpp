#include "mcp/tools.h"

#include "base/json_fields.h"

namespace corvane::MCP {

using nlohmann::json;

namespace {

json schema(json properties = nullptr, json required = nullptr) {
  json s = {{"type", "object"}, {"additionalProperties", false}};
  if (!properties.is_null()) s["properties"] = std::move(properties);
  if (!required.is_null()) s["required"] = std::move(required);
  return s;
}

json tool(const char* name, const char* title, const char* description, json inputSchema, json annotations) {
  return {{"name", name},
          {"title", title},
          {"description", description},
          {"inputSchema", std::move(inputSchema)},
          {"annotations", std::move(annotations)}};
}

}  // namespace

const json& tools() {
  static const json list = json::array({
      tool("list_running", "List running dev stack",
           "Simulators, emulators, daemons, containers, dev servers and databases running now, with RAM, ports, "
           "who started them, and whether you may stop them (can_stop, why_not).",
           schema(), {{"readOnlyHint", true}, {"openWorldHint", false}}),
      tool("stop", "Stop a row or a project",
           "Stops politely (simctl, adb, docker stop, SIGTERM) and waits 5 s. An id or port from list_running stops "
           "that row; a project name stops that project's rows. Never stops pinned rows, databases, builds, or what "
           "another agent started.",
           schema({{"target",
                    {{"type", "string"}, {"description", "An id or port from list_running, or a project name."}}}},
                  {"target"}),
           {{"destructiveHint", true}, {"idempotentHint", true}, {"openWorldHint", false}}),
      tool("free_memory", "Free memory",
           "Stops idle simulators, emulators and daemons, biggest first, until about this much RAM is freed.",
           schema({{"gb", {{"type", "number"}, {"exclusiveMinimum", 0}, {"description", "Gigabytes to free."}}},
                   {"dry_run", {{"type", "boolean"}, {"description", "Only say what would stop."}}}},
                  {"gb"}),
           {{"destructiveHint", true}, {"openWorldHint", false}}),
      tool("find_free_port", "Find a free port",
           "The first TCP port from `start` that nothing listens on, over IPv4 or IPv6.",
           schema({{"start", {{"type", "integer"}, {"minimum", 1}, {"maximum", 65535}, {"default", 3000}}}}),
           {{"readOnlyHint", true}, {"openWorldHint", false}}),
  });
  return list;
}

bool isTool(const std::string& name) {
  for (const auto& t : tools())
    if (t["name"] == name) return true;
  return false;
}

std::optional<Call> parse(const std::string& name, const json& arguments) {
  Call call;
  auto member = [&](const char* key) -> const json* {
    if (!arguments.is_object()) return nullptr;
    auto it = arguments.find(key);
    return it == arguments.end() ? nullptr : &*it;
  };

  if (name == "list_running") {
    call.kind = Call::Kind::listRunning;
    return call;
  }
  if (name == "stop") {
    call.kind = Call::Kind::stop;
    const json* target = member("target");
    if (!target) return std::nullopt;
    if (target->is_string()) {
      call.target = target->get<std::string>();
      if (call.target.empty()) return std::nullopt;
      return call;
    }
    auto number = jsonInteger(*target, WholeFloats::accepted);
    if (!number) return std::nullopt;
    call.target = std::to_string(*number);
    return call;
  }
  if (name == "free_memory") {
    call.kind = Call::Kind::freeMemory;
    const json* gb = member("gb");
    if (!gb || !gb->is_number()) return std::nullopt;
    call.gb = gb->get<double>();
    if (!(call.gb > 0 && call.gb < 1024)) return std::nullopt;
    const json* dryRun = member("dry_run");
    call.dryRun = dryRun && dryRun->is_boolean() && dryRun->get<bool>();
    return call;
  }
  if (name == "find_free_port") {
    call.kind = Call::Kind::findFreePort;
    const json* start = member("start");
    if (!start) return call;
    auto number = jsonInteger(*start, WholeFloats::accepted);
    if (!number || *number < 1 || *number > 65535) return std::nullopt;
    call.start = static_cast<uint16_t>(*number);
    return call;
  }
  return std::nullopt;
}

}  // namespace corvane::MCP
