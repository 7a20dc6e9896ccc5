#include "cli/commands.h"
#include "mcp/server.h"

namespace corvane {

int32_t mcpCommand() { return MCP::serve(); }

}  // namespace corvane
