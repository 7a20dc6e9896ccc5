// `corvane mcp` through the real executable: requests over pipes, and the rule that an agent may stop
// only what it started itself, with stand-ins for Claude Code and Codex that the tests start. Every call
// that scans takes at least 2 s, so the tests make as few of them as they can; every stop targets a
// server the test started on its own port, so nothing else on the machine is touched.
#include <filesystem>
#include <regex>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "activity/activity_log.h"
#include "platform/defaults.h"
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

const std::string initialize = request(1, "initialize", {{"protocolVersion", "2025-06-18"}});
const std::string initialized = R"({"jsonrpc":"2.0","method":"notifications/initialized"})";

// What the reply line of a tool call says, "error: " first when the tool failed. The envelope is the
// handler's; a reply of another shape throws, which fails the test.
std::string toolText(const std::string& line) {
  json reply = json::parse(line);
  json& result = reply.at("result");
  return (result.at("isError") == true ? "error: " : "") + result.at("content").at(0).at("text").get<std::string>();
}

// Each test gets its own log and suite, and a login shell that finds no tools at once: a real one may
// read a slow profile for each of the four tools the server looks up before its first tool call.
// Coding agents are played by copies of the Python interpreter named like them, running fake_agent.py.
class McpTest : public testing::Test, protected testing_support::OwnFolders {
 protected:
  void SetUp() override { SKIP_WHERE_USER_FILES_CANNOT_MOVE(); }

  // Starts the agent `name` ("claude", "codex") with the script's arguments.
  std::unique_ptr<Process> agent(const std::string& name, const std::vector<std::string>& arguments) {
    const std::string bin = root + "/bin", path = bin + "/" + name;
    fs::create_directories(bin);
    if (!fs::exists(path)) fs::copy_file(fs::canonical(python), path);
    std::vector<std::string> all{CORVANE_FIXTURES "/fake_agent.py"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return std::make_unique<Process>(path, all, testing_support::ProcessOptions{.grace = 5});
  }

  // What the agent printed next, as JSON; null when it printed nothing in time.
  static json said(Process& agent, double seconds = 10) {
    const auto line = agent.readLine(seconds);
    return line ? json::parse(*line, nullptr, false) : json();
  }

  testing_support::ScopedEnv shell{"SHELL", testing_support::writeScript(root + "/bin/login-shell", "exit 1\n")};
  const std::string python = testing_support::systemPython();
};

// The client hands over a non-blocking input, and goes while tool discovery waits on a slow login shell.
// The handshake and the requests that need no tools are answered without waiting for it; the shell, and
// what it started, end with the server, and no output file stays behind.
TEST_F(McpTest, AnswersAsRequestsArriveAndEndsWithItsInputAndTheToolLookup) {
  if (python.empty()) GTEST_SKIP() << "needs python3";
  const std::string tmp = root + "/tmp", pids = root + "/pids";
  fs::create_directories(tmp);
  testing_support::ScopedEnv tmpdir("TMPDIR", tmp);
  const std::string slow =
      "sleep 30 &\necho \"$$ $!\" > " + pids + ".part && mv " + pids + ".part " + pids + "\nwait\n";
  testing_support::ScopedEnv slowShell("SHELL", testing_support::writeScript(root + "/bin/slow-shell", slow));
  const std::string nonBlocking = "import fcntl, os, sys\n"
                                  "fcntl.fcntl(0, fcntl.F_SETFL, fcntl.fcntl(0, fcntl.F_GETFL) | os.O_NONBLOCK)\n"
                                  "os.execv(sys.argv[1], sys.argv[1:])\n";
  Process server(python, {"-c", nonBlocking, CORVANE_EXE, "mcp"}, {.captureErrors = true});
  ASSERT_GT(server.pid(), 0);
  for (int i = 0; i < 200 && !fs::exists(pids); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  std::istringstream started(testing_support::readFile(pids));
  pid_t shellPid = 0, sleepPid = 0;
  ASSERT_TRUE(started >> shellPid >> sleepPid);

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

  ASSERT_TRUE(server.writeLine(initialized));
  ASSERT_TRUE(server.writeLine(toolCall(2, "find_free_port")));
  const auto port = server.readLine();
  ASSERT_TRUE(port);
  EXPECT_TRUE(toolText(*port).starts_with("Port ")) << *port;
  ASSERT_TRUE(server.writeLine(request(3, "tools/list")));
  const auto tools = server.readLine();
  ASSERT_TRUE(tools);
  EXPECT_EQ(json::parse(*tools)["result"]["tools"].size(), 4u);
  EXPECT_FALSE(platform::processGone(shellPid));  // the first lookup still waits

  // The blank lines get nothing; the last request has no newline after it, and its reply is written
  // before the exit. The tools are listed by the handler's tests and called below.
  ASSERT_TRUE(server.writeAll("\n\r\n" R"({"id":9,"method":"ping"})"));
  server.closeInput();
  EXPECT_EQ(server.readToEnd(), "{\"id\":9,\"jsonrpc\":\"2.0\",\"result\":{}}\n");
  EXPECT_EQ(server.errors(), "");
  EXPECT_EQ(server.waitExit(), 0);
  for (const pid_t pid : {shellPid, sleepPid}) {
    for (int i = 0; i < 100 && !platform::processGone(pid); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(platform::processGone(pid)) << pid;
  }
  EXPECT_TRUE(fs::is_empty(tmp));
}

// Claude Code runs the server with one call of each tool, beside a dev server that Codex started. Of the
// two Gradle daemons Claude Code started, the pinned one is neither planned nor stopped.
TEST_F(McpTest, EachToolForAnAgentThatStopsOnlyWhatItStarted) {
  if (python.empty()) GTEST_SKIP() << "needs python3";
  const uint16_t codexPort = testing_support::freePort(), claudePort = testing_support::freePort();
  const uint16_t pinnedPort = testing_support::freePort(), unpinnedPort = testing_support::freePort();
  ASSERT_TRUE(platform::DefaultsStore::appSuite().writeDictionary("pins", {{"gradle 0.0-pinned", std::string()}}));
  const auto codex = agent("codex", {"--serve", python, std::to_string(codexPort), makeProject()});
  json codexServer = said(*codex);
  ASSERT_TRUE(codexServer["server"].is_number()) << codexServer;

  const std::string nothing = fs::path(testing_support::makeTempDir("nothing")).filename();
  const std::string claudeProject = makeProject();
  // Its own port as a number: the same call as its decimal text.
  const auto claude = agent(
      "claude", {"--serve", python, std::to_string(claudePort), claudeProject, "--daemon", python,
                 std::to_string(pinnedPort), "0.0-pinned", "--daemon", python, std::to_string(unpinnedPort),
                 "0.0-unpinned", "--mcp", CORVANE_EXE, initialize, initialized, toolCall(2, "find_free_port"),
                 toolCall(3, "list_running"), toolCall(4, "free_memory", {{"gb", 1000}, {"dry_run", true}}),
                 toolCall(5, "stop", {{"target", claudePort}}),
                 toolCall(6, "stop", {{"target", std::to_string(codexPort)}}),
                 toolCall(7, "stop", {{"target", nothing}}),
                 toolCall(8, "stop", {{"target", std::to_string(pinnedPort)}})});
  json claudeServer = said(*claude);
  ASSERT_TRUE(claudeServer["server"].is_number()) << claudeServer;
  for (int daemon = 0; daemon < 2; ++daemon) ASSERT_TRUE(said(*claude)["daemon"].is_number());
  json session = said(*claude, 60);
  ASSERT_TRUE(session.is_object()) << "no reply from the agent's server";
  EXPECT_EQ(session["exit"], 0);
  EXPECT_EQ(session["stderr"], "");
  ASSERT_EQ(session["replies"].size(), 8u) << session;
  std::vector<std::string> replies;  // the tool calls' texts, from id 2 on
  for (size_t i = 1; i < 8; ++i) replies.push_back(toolText(session["replies"][i].get<std::string>()));

  std::smatch port;
  ASSERT_TRUE(std::regex_match(replies[0], port, std::regex("Port ([0-9]+) is free\\."))) << replies[0];
  EXPECT_GE(std::stoul(port[1]), 3000u);

  json running = json::parse(replies[1]), own, others;
  for (auto& row : running.at("rows")) {
    if (row["id"] == "server:" + std::to_string(claudeServer["server"].get<int32_t>())) own = row;
    if (row["id"] == "server:" + std::to_string(codexServer["server"].get<int32_t>())) others = row;
  }
  const std::string title = "Python :" + std::to_string(claudePort);
  EXPECT_EQ(own["title"], title) << replies[1];
  EXPECT_EQ(own["can_stop"], true);
  EXPECT_EQ(others["why_not"], "started by another agent (Codex)");

  // What else can be freed depends on the machine; a dry run only ever says what it would stop.
  std::stringstream planned(replies[2]);
  for (std::string line; std::getline(planned, line);) EXPECT_TRUE(line.starts_with("Would stop ")) << replies[2];
  EXPECT_NE(replies[2].find("Would stop Gradle daemon 0.0-unpinned (0.0 GB)."), std::string::npos) << replies[2];
  EXPECT_EQ(replies[2].find("0.0-pinned"), std::string::npos) << replies[2];

  // An agent never forces: its server was asked to go.
  EXPECT_EQ(replies[3], "Stopped " + title + " (0.0 GB).\nFreed 0.0 GB.");
  EXPECT_EQ(testing_support::readFile(claudeProject + "/.signals"), "TERM\n");
  EXPECT_EQ(session["server_running"], false);
  EXPECT_EQ(replies[4],
            "error: Left Python :" + std::to_string(codexPort) + " alone: started by another agent (Codex).");
  EXPECT_EQ(replies[5], "error: Nothing running matches " + nothing + ". list_running shows ids, ports and projects.");
  EXPECT_EQ(replies[6], "error: Left Gradle daemon 0.0-pinned alone: pinned.");
  EXPECT_FALSE(platform::processGone(codexServer["server"].get<int32_t>()));

  // Only the stop is logged, under the name of the agent that asked for it.
  const auto entries = ActivityLog::standard().read();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].title, title);
  EXPECT_EQ(entries[0].reason, "Claude Code via MCP");
}

}  // namespace
}  // namespace corvane
