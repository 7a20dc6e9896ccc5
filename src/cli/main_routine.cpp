#include "cli/arguments.h"
#include "cli/commands.h"
#include "base/exit_codes.h"
#include "platform/interrupts.h"
#include "platform/output.h"
#include "cli/usage.h"

#include <string>

namespace corvane {

namespace {

int32_t dispatch(const Invocation& invocation) {
  switch (invocation.action) {
    case Invocation::Action::help:
      platform::writeOut(std::string(usageText) + "\n");
      return ExitCode::done;
    case Invocation::Action::usage:
      platform::writeErr(std::string(usageText) + "\n");
      return ExitCode::usage;
    case Invocation::Action::badGigabytes:
      platform::writeErr(gigabytesMessage);
      return ExitCode::usage;
    case Invocation::Action::status:
      return statusCommand(invocation);
    case Invocation::Action::stop:
      return stopCommand(invocation);
    case Invocation::Action::free:
      return freeCommand(invocation);
    case Invocation::Action::mcp:
      return mcpCommand();
  }
  return ExitCode::usage;
}

}  // namespace

int32_t runMain(const std::vector<std::string>& arguments) {
  platform::catchInterrupts();
  platform::ignoreBrokenPipes();
  const Invocation invocation = parseArguments(arguments);
  const int32_t exitCode = dispatch(invocation);
  // An interrupted stop has finished and been recorded; the exit tells the caller it was cut short.
  if (const auto interrupted = platform::interruptExitCode()) return *interrupted;
  // The MCP server's reader going away is its end of input, not a failure.
  if (invocation.action == Invocation::Action::mcp) return exitCode;
  // Output that didn't arrive is a failure whatever the command did, as it is for the system's own tools.
  if (const auto failure = platform::outputFailure()) {
    platform::writeErr("corvane: write error: " + *failure + "\n");
    return ExitCode::failed;
  }
  return exitCode;
}

}  // namespace corvane
