#include "mcp/handler.h"

#include <array>

#include "base/json_text.h"
#include "base/system_texts.h"

namespace corvane::MCP {

using nlohmann::json;

namespace {

constexpr std::array<const char*, 4> handshakeVersions = {"2025-11-25", "2025-06-18", "2025-03-26", "2024-11-05"};
constexpr std::array<const char*, 5> allVersions = {"2026-07-28", "2025-11-25", "2025-06-18", "2025-03-26",
                                                    "2024-11-05"};
// JSON-RPC's error codes, and the protocol's own for a version it doesn't speak.
constexpr int parseError = -32700;
constexpr int invalidRequest = -32600;
constexpr int methodNotFound = -32601;
constexpr int invalidParams = -32602;
constexpr int unsupportedVersion = -32022;

constexpr const char* fallbackVersion = "2025-11-25";
constexpr const char* versionKey = "io.modelcontextprotocol/protocolVersion";
constexpr int cacheMilliseconds = 3'600'000;

// The platform's JSON reader refuses nesting deeper than this. Copying and writing a value recurse, so
// without the limit a line of a hundred thousand "[" would overflow the stack and end the server.
constexpr int maxDepth = 512;

constexpr const char* instructions = CORVANE_AGENT_INSTRUCTIONS;

template <size_t N>
bool listed(const std::array<const char*, N>& list, const std::string& version) {
  for (const char* v : list)
    if (version == v) return true;
  return false;
}

json versionArray() {
  json a = json::array();
  for (const char* v : allVersions) a.push_back(v);
  return a;
}

json serverInfo(const std::string& version) { return {{"name", "corvane"}, {"version", version}}; }

json capabilities() { return {{"tools", json::object()}}; }

json toolResult(const Reply& reply) {
  return {{"content", json::array({{{"type", "text"}, {"text", reply.text}}})}, {"isError", reply.isError}};
}

std::optional<std::string> reply(const json& envelope) { return encodeCompactJSON(envelope, Slashes::plain); }

std::optional<std::string> errorReply(int code, const std::string& message, const json& id,
                                      const json& data = nullptr) {
  return encodeCompactJSON(error(code, message, id, data), Slashes::plain);
}

}  // namespace

json error(int code, const std::string& message, const json& id, const json& data) {
  json e = {{"code", code}, {"message", message}};
  if (!data.is_null()) e["data"] = data;
  return {{"jsonrpc", "2.0"}, {"id", id}, {"error", std::move(e)}};
}

std::optional<std::string> handle(std::string_view line, const std::string& version, const Runner& run) {
  bool tooDeep = false;
  const json::parser_callback_t watchDepth = [&](int depth, json::parse_event_t event, json&) {
    const bool opens = event == json::parse_event_t::object_start || event == json::parse_event_t::array_start;
    if (opens && depth >= maxDepth) tooDeep = true;
    return true;
  };
  // The reader takes a NUL byte for the end of its input and would answer the text before it; JSON has
  // no place for a raw NUL, so a line holding one does not parse.
  if (line.find('\0') != std::string_view::npos) return errorReply(parseError, "Parse error", nullptr);
  json request = json::parse(line.begin(), line.end(), watchDepth, false);
  if (request.is_discarded() || tooDeep || !(request.is_object() || request.is_array()))
    return errorReply(parseError, "Parse error", nullptr);
  if (!request.is_object()) return errorReply(invalidRequest, "Invalid request", nullptr);

  auto idMember = request.find("id");
  if (idMember == request.end() || idMember->is_null()) return std::nullopt;
  const json id = *idMember;

  auto methodMember = request.find("method");
  if (methodMember == request.end() || !methodMember->is_string())
    return errorReply(invalidRequest, "Invalid request", id);
  const std::string method = methodMember->get<std::string>();

  json params = json::object();
  if (auto p = request.find("params"); p != request.end() && p->is_object()) params = *p;

  bool versioned = false;
  if (auto meta = params.find("_meta"); meta != params.end() && meta->is_object()) {
    if (auto requested = meta->find(versionKey); requested != meta->end() && requested->is_string()) {
      std::string asked = requested->get<std::string>();
      if (!listed(allVersions, asked))
        return errorReply(unsupportedVersion, "Unsupported protocol version", id,
                          {{"supported", versionArray()}, {"requested", asked}});
      versioned = true;
    }
  }

  json result;
  if (method == "initialize") {
    std::string asked;
    if (auto v = params.find("protocolVersion"); v != params.end() && v->is_string()) asked = v->get<std::string>();
    result = {{"protocolVersion", listed(handshakeVersions, asked) ? asked : std::string(fallbackVersion)},
              {"capabilities", capabilities()},
              {"serverInfo", serverInfo(version)},
              {"instructions", instructions}};
  } else if (method == "server/discover") {
    result = {{"supportedVersions", versionArray()}, {"capabilities", capabilities()}, {"instructions", instructions}};
  } else if (method == "ping") {
    result = json::object();
  } else if (method == "tools/list") {
    result = {{"tools", tools()}};
  } else if (method == "tools/call") {
    std::string name;
    if (auto n = params.find("name"); n != params.end() && n->is_string()) name = n->get<std::string>();
    if (!isTool(name)) return errorReply(invalidParams, "Unknown tool: " + name, id);
    json arguments = json::object();
    if (auto a = params.find("arguments"); a != params.end() && a->is_object()) arguments = *a;
    auto call = parse(name, arguments);
    result = toolResult(call ? run(*call) : Reply{"Invalid arguments for " + name + "; see its inputSchema.", true});
  } else {
    return errorReply(methodNotFound, "Method not found: " + method, id);
  }

  if (versioned || method == "server/discover") {
    result["resultType"] = "complete";
    result["_meta"] = {{"io.modelcontextprotocol/serverInfo", serverInfo(version)}};
    // Both lists are the same for every caller and change only with the program, so any cache may keep them.
    if (method == "server/discover" || method == "tools/list") {
      result["ttlMs"] = cacheMilliseconds;
      result["cacheScope"] = "public";
    }
  }
  return reply({{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}});
}

}  // namespace corvane::MCP
