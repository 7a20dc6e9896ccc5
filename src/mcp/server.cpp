#include "mcp/server.h"

#include <future>
#include <memory>
#include <thread>

#include "platform/input.h"
#include "platform/interrupts.h"
#include "platform/output.h"
#include "base/exit_codes.h"
#include "mcp/caller.h"
#include "mcp/handler.h"
#include "platform/defaults.h"
#include "platform/server_version.h"
#include "platform/signals.h"
#include "scanner/scanner.h"
#include "snapshot/reader.h"

namespace corvane::MCP {

int32_t serve() {
  // A handful of reads up the server's own ancestry: the whole process table would cost more than
  // everything else the handshake does.
  std::optional<Caller> agent = caller(ancestors(platform::ownPid()));
  std::optional<int32_t> agentPID;
  if (agent) agentPID = agent->pid;

  // The handshake must not wait for tool discovery (up to four login shells) or the first scan.
  // A detached thread rather than std::async, whose future would hold up the exit at end of input.
  auto promise = std::make_shared<std::promise<std::shared_ptr<Scanner>>>();
  std::shared_future<std::shared_ptr<Scanner>> scanner = promise->get_future().share();
  std::thread([promise] { promise->set_value(std::make_shared<Scanner>(Tools::load({}, nullptr, userShell()))); })
      .detach();

  const std::string label = callerLabel(agent);
  const std::string version = platform::serverVersion();
  const ScannerWhenReady ready = [&]() -> Scanner& { return *scanner.get(); };
  Runner runner = [&](const Call& call) { return callTool(call, ready, agentPID, label); };

  platform::InputLines input;
  // An interrupted stop call is answered and recorded; then the server ends as the command does.
  while (!platform::interrupted()) {
    std::optional<std::string> line = input.next();
    if (!line) break;
    if (!line->empty() && line->back() == '\r') line->pop_back();
    if (line->empty()) continue;
    const auto reply = handle(*line, version, runner);
    // A reader that has gone ends the session as the end of input does, once the call is complete.
    if (reply && !platform::writeOut(*reply + "\n")) break;
  }
  platform::closeDefaults();
  return ExitCode::done;
}

}  // namespace corvane::MCP
