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

int32_t stopCommand(const std::string&, bool, bool, bool, bool) { return notBuilt("stop"); }
int32_t freeCommand(double, bool, bool) { return notBuilt("free"); }
int32_t mcpCommand() { return notBuilt("mcp"); }

}  // namespace corvane
