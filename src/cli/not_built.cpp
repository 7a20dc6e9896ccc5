// Commands whose work comes in later steps say so plainly instead of printing anything made up.
#include "cli/commands.h"
#include "cli/output.h"

namespace corvane {

namespace {

int32_t notBuilt(const char* command) {
  writeErr(std::string("corvane: ") + command + " is not built yet.\n");
  return 1;
}

}  // namespace

int32_t mcpCommand() { return notBuilt("mcp"); }

}  // namespace corvane
