#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/output.h"
#include "cli/usage.h"

#include <string>

namespace corvane {

int32_t runMain(const std::vector<std::string>& arguments) {
  Invocation invocation = parseArguments(arguments);
  switch (invocation.action) {
    case Invocation::Action::help:
      writeOut(std::string(usageText) + "\n");
      return 0;
    case Invocation::Action::usage:
      writeErr(std::string(usageText) + "\n");
      return 64;
    case Invocation::Action::badGigabytes:
      writeErr(gigabytesMessage);
      return 64;
    case Invocation::Action::status:
      return statusCommand(invocation.json);
    case Invocation::Action::stop:
      return stopCommand(invocation.target, invocation.yes, invocation.force, invocation.dryRun, invocation.json);
    case Invocation::Action::free:
      return freeCommand(invocation.gigabytes, invocation.dryRun, invocation.json);
    case Invocation::Action::mcp:
      return mcpCommand();
  }
  return 64;
}

}  // namespace corvane
