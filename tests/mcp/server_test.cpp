// `corvane mcp` through the real executable: requests over pipes, and the rule that an agent may stop
// only what it started itself, with stand-ins for Claude Code and Codex that the tests start. Every call
// that scans takes at least 2 s, so each test makes as few of them as it can; every stop targets a
// server the test started on its own port, so nothing else on the machine is touched.
#include <filesystem>
#include <regex>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "activity/activity_log.h"
#include "platform/process_table.h"
#include "support/process.h"
#include "support/fake_programs.h"
#include "support/listeners.h"
#include "support/user_files.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing_support::Process;

std::string request(int id, const std::string& method, const json& params = nullptr) {
  json r = {{"jsonrpc", "2.0"}, {"id", id}, {"method", method}};
  if (!params.is_null()) r["params"] = params;
  return r.dump();
}

std::string toolCall(int id, const std::string& name, const json& arguments = json::object()) {
  return request(id, "tools/call", {{"name", name}, {"arguments", arguments}});
}

const std::string initialize = request(1, "initialize", {{"protocolVersion", "2025-06-18"},
                                                        {"capabilities", json::object()},
                                                        {"clientInfo", {{"name", "test"}, {"version", "1"}}}});
const std::string initialized = R"({"jsonrpc":"2.0","method":"notifications/initialized"})";

struct ToolReply {
  json id;
  std::string text;
  bool isError = false;
};

// The tool result of a reply line; a reply of another shape fails the test. Parsed values stay mutable:
// operator[] of a const value is undefined for a missing key, and a wrong answer must fail, not crash.
ToolReply toolReply(const std::string& line) {
  json reply = json::parse(line, nullptr, false);
  json result = reply.is_object() ? reply["result"] : json();
  EXPECT_TRUE(result.is_object() && result.size() == 2 && result["content"].size() == 1 &&
              result["content"][0]["type"] == "text") << line;
  const json& text = result["content"][0]["text"];
  return {reply.is_object() ? reply["id"] : json(), text.is_string() ? text.get<std::string>() : "",
          result["isError"] == true};
}

// "Port N is free." gives N; anything else 0.
unsigned freePortIn(const std::string& text) {
  std::smatch m;
  return std::regex_match(text, m, std::regex("Port ([0-9]+) is free\\.")) ? std::stoul(m[1]) : 0;
}

// Each test gets its own log and suite, and a login shell that finds no tools at once: a real one may
// read a slow profile for each of the four tools the server looks up before its first tool call.
class McpTest : public testing::Test, protected testing_support::OwnFolders {
 protected:
  void SetUp() override { SKIP_WHERE_USER_FILES_CANNOT_MOVE(); }

  testing_support::ScopedEnv shell{"SHELL", testing_support::writeScript(root + "/bin/login-shell", "exit 1\n")};
};

TEST_F(McpTest, AnswersEachRequestAsItArrivesAndEndsWithItsInput) {
  Process server(CORVANE_EXE, {"mcp"});
  ASSERT_GT(server.pid(), 0);

  ASSERT_TRUE(server.writeLine(initialize));
  const auto hello = server.readLine();
  ASSERT_TRUE(hello);
  json result = json::parse(*hello)["result"];
  EXPECT_EQ(result["protocolVersion"], "2025-06-18");
#ifdef __APPLE__
  // The Mac reads the version from the app bundle around the program, and this build has none.
  EXPECT_EQ(result["serverInfo"], (json{{"name", "corvane"}, {"version", "dev"}}));
#else
  // Without an app bundle the version is the one the build was made with.
  EXPECT_EQ(result["serverInfo"], (json{{"name", "corvane"}, {"version", CORVANE_VERSION}}));
#endif

  // The notification and the empty line get nothing, so the next line is the tool list.
  ASSERT_TRUE(server.writeLine(initialized));
  ASSERT_TRUE(server.writeLine(""));
  ASSERT_TRUE(server.writeLine(request(2, "tools/list")));
  const auto listed = server.readLine();
  ASSERT_TRUE(listed);
  json reply = json::parse(*listed);
  EXPECT_EQ(reply["id"], 2);
  std::vector<std::string> names;
  for (auto& tool : reply["result"]["tools"]) names.push_back(tool["name"]);
  EXPECT_EQ(names, (std::vector<std::string>{"list_running", "stop", "free_memory", "find_free_port"}));

  // A port held on every IPv4 address.
  testing_support::Socket socket;
  const uint16_t held = socket.listen(0, true);
  ASSERT_GT(held, 0);
  ASSERT_TRUE(server.writeLine(toolCall(3, "find_free_port", {{"start", held}})));
  ASSERT_TRUE(server.writeLine(toolCall(4, "find_free_port")));
  const auto afterHeld = server.readLine(30), fromDefault = server.readLine();
  ASSERT_TRUE(afterHeld && fromDefault);
  const ToolReply pastHeld = toolReply(*afterHeld), first = toolReply(*fromDefault);
  EXPECT_EQ(pastHeld.id, 3);
  EXPECT_FALSE(pastHeld.isError);
  EXPECT_GT(freePortIn(pastHeld.text), held) << pastHeld.text;
  EXPECT_EQ(first.id, 4);
  EXPECT_GE(freePortIn(first.text), 3000u) << first.text;

  server.closeInput();
  EXPECT_EQ(server.readToEnd(), "");
  EXPECT_EQ(server.waitExit(), 0);
}

// The client goes while tool discovery waits on a slow login shell: the shell, and what it started,
// end with the server, and no output file stays behind.
TEST_F(McpTest, EndOfInputEndsTheToolLookupStillRunning) {
  const std::string tmp = root + "/tmp", pids = root + "/pids";
  fs::create_directories(tmp);
  testing_support::ScopedEnv tmpdir("TMPDIR", tmp);
  testing_support::ScopedEnv slowShell(
      "SHELL", testing_support::writeScript(root + "/bin/slow-shell", "sleep 30 &\necho \"$$ $!\" > " + pids +
                                                                          ".part && mv " + pids + ".part " + pids +
                                                                          "\nwait\n"));
  Process server(CORVANE_EXE, {"mcp"});
  ASSERT_GT(server.pid(), 0);
  for (int i = 0; i < 200 && !fs::exists(pids); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  std::istringstream started(testing_support::readFile(pids));
  pid_t shellPid = 0, sleepPid = 0;
  ASSERT_TRUE(started >> shellPid >> sleepPid);

  server.closeInput();
  EXPECT_EQ(server.waitExit(), 0);
  for (const pid_t pid : {shellPid, sleepPid}) {
    for (int i = 0; i < 100 && !platform::processGone(pid); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(platform::processGone(pid)) << pid;
  }
  EXPECT_TRUE(fs::is_empty(tmp));
}

TEST_F(McpTest, TheLastReplyIsWrittenBeforeExitAndBlankInputGetsNothing) {
  // The last request has no newline after it.
  const auto ended = testing_support::runCorvane({"mcp"}, "\n\n" + initialized + "\n\n{\"id\":9,\"method\":\"ping\"}");
  EXPECT_EQ(ended.exitCode, 0);
  EXPECT_EQ(ended.out, "{\"id\":9,\"jsonrpc\":\"2.0\",\"result\":{}}\n");
  EXPECT_EQ(ended.err, "");

  const auto blank = testing_support::runCorvane({"mcp"}, "\n\r\n\n");
  EXPECT_EQ(blank.exitCode, 0);
  EXPECT_EQ(blank.out, "");
  EXPECT_EQ(blank.err, "");
}

// A dev server in a project folder (a repository named like its temporary folder, so unique).
class McpDevServerTest : public McpTest {
 protected:
  void SetUp() override {
    McpTest::SetUp();
    if (IsSkipped()) return;
    if (python.empty()) GTEST_SKIP() << "needs python3";
  }

  const std::string python = testing_support::systemPython();
};

TEST_F(McpDevServerTest, ListsTheServerAndPlansFreeingWithoutStoppingIt) {
  const std::string project = makeProject();
  const uint16_t port = testing_support::freePort();
  testing_support::Process site(
      python, {"-m", "http.server", std::to_string(port), "--bind", "127.0.0.1"}, {.directory = project});
  ASSERT_TRUE(testing_support::listening(port));

  const auto run = testing_support::runCorvane(
      {"mcp"}, toolCall(1, "list_running") + "\n" + toolCall(2, "free_memory", {{"gb", 0.5}, {"dry_run", true}}) + "\n");
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.err, "");
  std::vector<std::string> lines;
  for (size_t at = 0, next; (next = run.out.find('\n', at)) != std::string::npos; at = next + 1)
    lines.push_back(run.out.substr(at, next - at));
  ASSERT_EQ(lines.size(), 2u) << run.out;

  const ToolReply listing = toolReply(lines[0]);
  EXPECT_FALSE(listing.isError);
  json running = json::parse(listing.text, nullptr, false);
  ASSERT_TRUE(running.is_object()) << listing.text;
  json mine;
  for (auto& row : running["rows"])
    if (row["id"] == "server:" + std::to_string(site.pid())) mine = row;
  ASSERT_TRUE(mine.is_object()) << listing.text;
  EXPECT_EQ(mine["title"], "Python :" + std::to_string(port));
  EXPECT_EQ(mine["project"], fs::path(project).filename().string());
  // Whoever runs the tests started it, and the server's caller is found above the same tests.
  EXPECT_EQ(mine["can_stop"], true);

  // What can be freed depends on the machine; a dry run only ever says what it would stop.
  const ToolReply plan = toolReply(lines[1]);
  EXPECT_FALSE(plan.isError);
  if (plan.text != "Nothing to free: no simulators, emulators or daemons you may stop.") {
    std::stringstream planned(plan.text);
    for (std::string line; std::getline(planned, line);) EXPECT_TRUE(line.starts_with("Would stop ")) << plan.text;
  }
  EXPECT_FALSE(platform::processGone(site.pid()));
  EXPECT_FALSE(logTouched());
}

// Coding agents played by copies of the Python interpreter named like them, running fake_agent.py.
class McpCallerTest : public McpDevServerTest {
 protected:
  // Starts the agent `name` ("claude", "codex") with the script's arguments.
  std::unique_ptr<Process> agent(const std::string& name, const std::vector<std::string>& arguments) {
    const std::string bin = root + "/bin", path = bin + "/" + name;
    fs::create_directories(bin);
    if (!fs::exists(path)) fs::copy_file(fs::canonical(python), path);
    std::vector<std::string> all{CORVANE_FIXTURES "/fake_agent.py"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return std::make_unique<Process>(path, all, testing_support::ProcessOptions{.grace = 5});
  }

  std::vector<std::string> serving(uint16_t port, const std::string& directory) const {
    return {"--serve", python, std::to_string(port), directory};
  }

  // What the agent printed next, as JSON; null when it printed nothing in time.
  static json said(Process& agent, double seconds = 10) {
    const auto line = agent.readLine(seconds);
    return line ? json::parse(*line, nullptr, false) : json();
  }
};

TEST_F(McpCallerTest, AnAgentStopsTheDevServerItStarted) {
  const uint16_t port = testing_support::freePort();
  std::vector<std::string> arguments = serving(port, makeProject());
  // The port as a number: the same call as its decimal text.
  arguments.insert(arguments.end(),
                   {"--mcp", CORVANE_EXE, initialize, initialized, toolCall(2, "stop", {{"target", port}})});
  const auto claude = agent("claude", arguments);

  json server = said(*claude);
  ASSERT_TRUE(server["server"].is_number()) << server;
  json session = said(*claude, 60);
  ASSERT_TRUE(session.is_object()) << "no reply from the agent's server";
  EXPECT_EQ(session["exit"], 0);
  EXPECT_EQ(session["stderr"], "");
  ASSERT_EQ(session["replies"].size(), 2u) << session;
  const ToolReply stopped = toolReply(session["replies"][1].get<std::string>());
  const std::string title = "Python :" + std::to_string(port);
  EXPECT_EQ(stopped.text, "Stopped " + title + " (0.0 GB).\nFreed 0.0 GB.");
  EXPECT_FALSE(stopped.isError);
  EXPECT_EQ(session["server_running"], false);

  const auto entries = ActivityLog::standard().read();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].title, title);
  EXPECT_EQ(entries[0].kind, Item::Kind::server);
  EXPECT_EQ(entries[0].reason, "Claude Code via MCP");
}

TEST_F(McpCallerTest, AnAgentLeavesWhatAnotherAgentStartedAlone) {
  const uint16_t port = testing_support::freePort();
  const auto codex = agent("codex", serving(port, makeProject()));
  json server = said(*codex);
  ASSERT_TRUE(server["server"].is_number()) << server;

  const std::string nothing = fs::path(testing_support::makeTempDir("nothing")).filename();
  const auto claude = agent("claude", {"--mcp", CORVANE_EXE, toolCall(1, "stop", {{"target", std::to_string(port)}}),
                                       toolCall(2, "stop", {{"target", nothing}})});
  json session = said(*claude, 60);
  ASSERT_TRUE(session.is_object()) << "no reply from the agent's server";
  EXPECT_EQ(session["exit"], 0);
  ASSERT_EQ(session["replies"].size(), 2u) << session;

  const ToolReply refused = toolReply(session["replies"][0].get<std::string>());
  EXPECT_EQ(refused.text, "Left Python :" + std::to_string(port) + " alone: started by another agent (Codex).");
  EXPECT_TRUE(refused.isError);
  const ToolReply unmatched = toolReply(session["replies"][1].get<std::string>());
  EXPECT_EQ(unmatched.text, "Nothing running matches " + nothing + ". list_running shows ids, ports and projects.");
  EXPECT_TRUE(unmatched.isError);

  EXPECT_FALSE(platform::processGone(server["server"].get<int32_t>()));
  EXPECT_FALSE(logTouched());
}

}  // namespace
}  // namespace corvane
