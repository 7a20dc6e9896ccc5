// Running outside programs. Standard output goes to a file that is read once the program has ended,
// so a chatty tool can never fill a pipe and stall.
#include <cstdlib>

#include "platform/child_process.h"
#include "platform/paths.h"
#include "platform/tool_locations.h"
#include "platform/uuid.h"
#include "tools/tools.h"

namespace corvane {

namespace {

// How long a program that ignores the time-out's SIGTERM keeps running before it is killed. Nothing
// in corvane needs to wait for such a program, and a hung `docker` must not hang a command or the
// MCP server with it.
constexpr double killGraceSeconds = 5;

}  // namespace

std::optional<Tools::Output> run(const std::string& path, const std::vector<std::string>& arguments,
                                 double timeoutSeconds) {
  const std::string outputFile = platform::temporaryDirectory() + "/corvane-" + platform::newUUID();
  auto output = platform::runCapturingOutput(path, arguments, outputFile, timeoutSeconds, killGraceSeconds);
  if (!output) return std::nullopt;
  return Tools::Output{output->status, std::move(output->data)};
}

bool launchDetached(const std::string& path, const std::vector<std::string>& arguments) {
  return platform::launchDetached(path, arguments);
}

std::string userShell() {
  const char* shell = std::getenv("SHELL");
  return shell ? std::string(shell) : std::string(platform::defaultShell());
}

}  // namespace corvane
