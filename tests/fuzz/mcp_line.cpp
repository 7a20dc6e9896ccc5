// One input line of the MCP server: whatever it is, the handler answers with at most one line of JSON.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "mcp/handler.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const corvane::MCP::Runner run = [](const corvane::MCP::Call&) { return corvane::MCP::Reply{"done", false}; };
  const auto reply = corvane::MCP::handle(std::string_view(reinterpret_cast<const char*>(data), size), "0.1", run);
  if (reply && (reply->find('\n') != std::string::npos || nlohmann::json::parse(*reply, nullptr, false).is_discarded()))
    std::abort();
  return 0;
}
