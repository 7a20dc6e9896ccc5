// free_memory through the tool itself, on a process table the test describes and a clock it moves.
#include <gtest/gtest.h>

#include "mcp/server.h"
#include "scanner/scanner.h"

namespace corvane::MCP {
namespace {

Proc process(int32_t pid, int32_t ppid, const std::string& path, const std::string& cwd,
             std::vector<uint16_t> listening = {}, uint64_t footprint = 0) {
  Proc p;
  p.pid = pid;
  p.ppid = ppid;
  p.path = path;
  p.name = lastPathComponent(path);
  p.args = {path};
  p.cwd = cwd;
  p.listening = std::move(listening);
  p.footprint = footprint;
  return p;
}

// Desktop applications that listen on a port from the user's folders stay out of every plan, however
// long they have been quiet and however big they are; the server started from the terminal does not.
TEST(FreeMemoryTest, NeverPlansAnApplication) {
  const std::string home = "/home/ann", shop = home + "/shop";
  Snapshot machine;
  machine.procs = {
      process(10, 1, home + "/.local/share/JetBrains/Toolbox/apps/intellij-idea-ultimate/bin/idea", home, {63342},
              3'000'000'000),
      process(20, 1, "/usr/share/spotify/spotify", home, {57621}, 900'000'000),
      process(30, 1, "/usr/share/code/code", shop, {}, 800'000'000),
      process(31, 30, "/usr/share/code/code", shop, {45123}, 400'000'000),
      process(40, 1, "/usr/libexec/gnome-terminal-server", home),
      process(41, 40, "/usr/bin/bash", shop),
      process(42, 41, "/usr/bin/python3.11", shop, {8000}, 30'000'000),
  };
  Scanner scanner(Tools{}, [&](ArgsCache&) { return machine; });
  machine.taken = dateFromSeconds(1'800'000'000);
  scanner.scan();
  // Ten quiet minutes later.
  machine.taken = dateFromSeconds(1'800'000'700);

  Call call;
  call.kind = Call::Kind::freeMemory;
  call.gb = 100;
  call.dryRun = true;
  const Reply plan = callTool(call, scanner, 4242, "Claude Code via MCP");
  EXPECT_EQ(plan.text, "Would stop Python :8000 (0.0 GB).");
  EXPECT_FALSE(plan.isError);
}

}  // namespace
}  // namespace corvane::MCP
