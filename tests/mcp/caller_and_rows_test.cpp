#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "mcp/caller.h"
#include "mcp/rows.h"

namespace corvane::MCP {
namespace {

using nlohmann::json;

Proc proc(int32_t pid, int32_t ppid, const std::string& path) {
  return {.pid = pid, .ppid = ppid, .path = path, .args = {path}, .name = std::string(lastPathComponent(path))};
}

TEST(CallerTest, FindsTheAgentAboveTheServerUnlessAnAppIsInBetween) {
  std::vector<Proc> chain = {proc(200, 100, "/bin/zsh"), proc(100, 1, "/Users/ann/.local/bin/claude")};
  auto found = caller(chain);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->pid, 100);
  EXPECT_EQ(found->name, "Claude Code");
  EXPECT_EQ(callerLabel(found), "Claude Code via MCP");
  EXPECT_EQ(callerLabel(std::nullopt), "An agent via MCP");

  // An editor application between the server and the agent hides the agent.
  chain[0] = proc(200, 100, "/Applications/Cursor.app/Contents/MacOS/Cursor");
  EXPECT_FALSE(caller(chain));
  // A Python inside a framework bundle is a tool, not an app.
  chain[0] = proc(200, 100, "/Library/Frameworks/Python.framework/Versions/3.12/bin/python3");
  EXPECT_TRUE(caller(chain));
  EXPECT_FALSE(caller({}));  // no ancestor could be read
}

// An agent that relaunched itself is one session: the caller is its outermost process, the one its rows
// name. Another agent, or an application, above it starts a session of its own.
TEST(CallerTest, NamesTheOutermostProcessOfTheSession) {
  const std::string gemini = "/usr/lib/node_modules/@google/gemini-cli/bin/gemini";
  std::vector<Proc> chain = {proc(30, 20, "/bin/bash"), proc(20, 10, "/usr/bin/node"), proc(10, 5, "/usr/bin/node"),
                             proc(5, 1, "/Users/ann/.local/bin/codex")};
  chain[1].args = {"/usr/bin/node", "--max-old-space-size=9", gemini};
  chain[2].args = {"node", gemini};
  EXPECT_EQ(caller(chain)->pid, 10);
  chain.insert(chain.begin() + 2, proc(15, 10, "/Applications/Cursor.app/Contents/MacOS/Cursor"));
  EXPECT_EQ(caller(chain)->pid, 20);
}

Item item(const std::string& id, uint64_t memory, bool counted = true) {
  return {.id = id, .key = id, .kind = counted ? Item::Kind::server : Item::Kind::container, .title = "T/" + id,
          .pids = {1}, .memory = memory, .counted = counted, .stop = Stop::signal()};
}

TEST(ListRunningTest, SnakeCaseRowsAndRoundedTotal) {
  Item server = item("server:1", 1'249'999'999);
  server.project = "shop";
  server.startedBy = "Codex";
  server.agentPID = 77;
  server.ports = {3000};
  Item container = item("container:ab", 2'000'000'000, false);
  Item small = item("server:2", 1'000'001);
  auto rows = rowsFor({server, container, small}, {{"server:2", "pinned"}}, 42);
  json listing = json::parse(listRunningText(rows, Pressure::warning));

  EXPECT_EQ(listing["pressure"], "warning");
  EXPECT_DOUBLE_EQ(listing["dev_stack_gb"].get<double>(), 1.3);  // 1.251 GB counted; the container is not
  ASSERT_EQ(listing["rows"].size(), 3u);
  EXPECT_EQ(listing["rows"][0], json::parse(R"x({"id":"server:1","title":"T/server:1","kind":"server","project":"shop",
      "memory_mb":1249,"ports":[3000],"started_by":"Codex","building":false,"can_stop":false,
      "why_not":"started by another agent (Codex)"})x"));
  EXPECT_EQ(listing["rows"][1]["memory_mb"], 2000);
  EXPECT_EQ(listing["rows"][1]["can_stop"], true);
  EXPECT_FALSE(listing["rows"][1].contains("why_not"));
  EXPECT_EQ(listing["rows"][2]["why_not"], "pinned");
  EXPECT_NE(listRunningText(rows, Pressure::normal).find("T\\/server:1"), std::string::npos);
}

}  // namespace
}  // namespace corvane::MCP
