// `corvane mcp` through the real executable: requests over pipes, and the rule that an agent may stop
// only what it started itself, with stand-ins for Claude Code and Gemini CLI that the tests start. Every call
// that scans takes at least 2 s, so the tests make as few of them as they can; every stop targets a
// server the test started on its own port, so nothing else on the machine is touched.
#include <algorithm>
#include <filesystem>
#include <fstream>
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
class McpTest : public testing::Test, protected testing_support::OwnFolders {
 protected:
  void SetUp() override { SKIP_WHERE_USER_FILES_CANNOT_MOVE(); }

  // Copies `from` to where the npm package `package` installs its program `program`.
  std::string install(const std::string& from, const std::string& package, const std::string& program) {
    const std::string path = root + "/lib/node_modules/" + package + "/bin/" + program;
    fs::create_directories(fs::path(path).parent_path());
    fs::copy_file(from, path);
    return path;
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

// The agents as their packages run them: Gemini CLI's script under node, relaunched with a bigger heap,
// with a server its shell started, and Claude Code's native program (the stand-in, copied to its path) with
// a server of its own, two Gradle daemons (one pinned) and this MCP server, which calls each tool once.
// Claude Code stops its own server politely and neither Gemini's nor the pinned daemon; the user stops
// Gemini's by its port, and Gemini goes on running.
TEST_F(McpTest, EachToolForAnAgentThatStopsOnlyWhatItStarted) {
  const auto which = testing_support::runProgram("/bin/sh", {"-c", "command -v node"});
  if (which.exitCode != 0 || python.empty()) GTEST_SKIP() << "needs node and python3";
  const std::string node = fs::canonical(which.out.substr(0, which.out.find('\n')));
  // A server writes down the SIGTERM it receives, in its folder, before it goes.
  const auto serve = [&](uint16_t port) {
    return node + " -e \"process.on('SIGTERM', () => { require('fs').appendFileSync('.signals', 'TERM\\n'); " +
           "process.exit(0); }); require('http').createServer((q, s) => s.end()).listen(" + std::to_string(port) +
           ", '127.0.0.1')\"";
  };
  const auto daemon = [&](uint16_t port, const std::string& version) {
    return "exec " + python + " -c 'import socket, sys, time; l = socket.socket(); " +
           "l.bind((\"127.0.0.1\", int(sys.argv[1]))); l.listen(); time.sleep(600)' " + std::to_string(port) +
           " org.gradle.launcher.daemon.bootstrap.GradleDaemon " + version;
  };
  ASSERT_TRUE(platform::DefaultsStore::appSuite().writeDictionary("pins", {{"gradle 0.0-pinned", std::string()}}));
  const uint16_t geminiPort = testing_support::freePort(), claudePort = testing_support::freePort();
  const uint16_t pinnedPort = testing_support::freePort(), unpinnedPort = testing_support::freePort();
  const std::string gemini = install(CORVANE_FIXTURES "/relaunching_agent.js", "@google/gemini-cli", "gemini");
  Process geminiAgent(node, {gemini}, {.env = {{"STAND_IN_RUN", serve(geminiPort)}}, .directory = makeProject(),
                                       .grace = 5});
  const std::string go = root + "/go", requests = root + "/requests", answers = root + "/answers";
  const std::string mcp = "while [ ! -e " + go + " ]; do sleep 0.05; done; " + CORVANE_EXE + " mcp < " + requests +
                          " > " + answers + ".part 2> " + answers + ".errors && mv " + answers + ".part " + answers;
  const std::string claude = install(CORVANE_STAND_IN, "@anthropic-ai/claude-code", "claude.exe");
  const std::string claudeProject = makeProject();
  Process claudeAgent(claude, {},
                      {.env = {{"STAND_IN_RUN", "exec " + serve(claudePort) + "\n" + daemon(pinnedPort, "0.0-pinned") +
                                                    "\n" + daemon(unpinnedPort, "0.0-unpinned") + "\n" + mcp}},
                       .directory = claudeProject, .grace = 5});
  for (const uint16_t port : {geminiPort, claudePort, pinnedPort, unpinnedPort})
    ASSERT_TRUE(testing_support::listening(port)) << port;

  // One row a session, and a server row that owns none of the agent's processes.
  const auto status = testing_support::runCorvane({"status", "--json"});
  ASSERT_EQ(status.exitCode, 0) << status.err;
  json geminiRow, geminiServer, claudeRow;
  for (const json& row : json::parse(status.out)) {
    if (row["id"] == "agent:" + std::to_string(geminiAgent.pid())) geminiRow = row;
    if (row["id"] == "agent:" + std::to_string(claudeAgent.pid())) claudeRow = row;
    if (row["ports"] == json::array({geminiPort})) geminiServer = row;
  }
  ASSERT_EQ(geminiRow["title"], "Gemini CLI") << status.out;
  EXPECT_EQ(claudeRow["title"], "Claude Code") << status.out;
  const std::vector<int32_t> geminiPids = geminiRow["pids"];
  ASSERT_EQ(geminiPids.size(), 2u) << geminiRow;  // the script and its relaunch; its shell went to the server
  EXPECT_EQ(geminiServer["startedBy"], "Gemini CLI") << geminiServer;
  EXPECT_EQ(geminiServer["agentPID"], geminiAgent.pid());
  for (const int32_t pid : geminiServer["pids"].get<std::vector<int32_t>>())
    EXPECT_EQ(std::count(geminiPids.begin(), geminiPids.end(), pid), 0);

  // Its own port as a number: the same call as its decimal text.
  const std::string nothing = fs::path(testing_support::makeTempDir("nothing")).filename();
  std::ofstream(requests) << initialize << "\n" << initialized << "\n" << toolCall(2, "find_free_port") << "\n"
                          << toolCall(3, "list_running") << "\n"
                          << toolCall(4, "free_memory", {{"gb", 1000}, {"dry_run", true}}) << "\n"
                          << toolCall(5, "stop", {{"target", claudePort}}) << "\n"
                          << toolCall(6, "stop", {{"target", std::to_string(geminiPort)}}) << "\n"
                          << toolCall(7, "stop", {{"target", nothing}}) << "\n"
                          << toolCall(8, "stop", {{"target", std::to_string(pinnedPort)}}) << "\n";
  std::ofstream(go).close();
  for (int i = 0; i < 1200 && !fs::exists(answers); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(testing_support::readFile(answers + ".errors"), "");
  std::stringstream lines(testing_support::readFile(answers));
  std::vector<std::string> replies;  // the tool calls' texts, from id 2 on
  for (std::string line; std::getline(lines, line);)
    if (json::parse(line)["id"] != 1) replies.push_back(toolText(line));
  ASSERT_EQ(replies.size(), 7u) << lines.str();

  std::smatch port;
  ASSERT_TRUE(std::regex_match(replies[0], port, std::regex("Port ([0-9]+) is free\\."))) << replies[0];
  EXPECT_GE(std::stoul(port[1]), 3000u);

  json running = json::parse(replies[1]), own, others;
  for (auto& row : running.at("rows")) {
    if (row["ports"] == json::array({claudePort})) own = row;
    if (row["ports"] == json::array({geminiPort})) others = row;
  }
  const std::string title = "Node :" + std::to_string(claudePort);
  EXPECT_EQ(own["title"], title) << replies[1];
  EXPECT_EQ(own["can_stop"], true);
  EXPECT_EQ(others["why_not"], "started by another agent (Gemini CLI)");

  // What else can be freed depends on the machine; a dry run only ever says what it would stop.
  std::stringstream planned(replies[2]);
  for (std::string line; std::getline(planned, line);) EXPECT_TRUE(line.starts_with("Would stop ")) << replies[2];
  EXPECT_NE(replies[2].find("Would stop Gradle daemon 0.0-unpinned (0.0 GB)."), std::string::npos) << replies[2];
  EXPECT_EQ(replies[2].find("0.0-pinned"), std::string::npos) << replies[2];

  // An agent never forces: its server was asked to go.
  EXPECT_EQ(replies[3], "Stopped " + title + " (0.0 GB).\nFreed 0.0 GB.");
  EXPECT_EQ(testing_support::readFile(claudeProject + "/.signals"), "TERM\n");
  EXPECT_FALSE(testing_support::Socket().connect(claudePort));
  EXPECT_EQ(replies[4], "error: Left Node :" + std::to_string(geminiPort) +
                            " alone: started by another agent (Gemini CLI).");
  EXPECT_EQ(replies[5], "error: Nothing running matches " + nothing + ". list_running shows ids, ports and projects.");
  EXPECT_EQ(replies[6], "error: Left Gradle daemon 0.0-pinned alone: pinned.");
  EXPECT_TRUE(testing_support::Socket().connect(geminiPort));

  // Only the stop is logged, under the name of the agent that asked for it.
  const auto entries = ActivityLog::standard().read();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].title, title);
  EXPECT_EQ(entries[0].reason, "Claude Code via MCP");

  const auto stopped = testing_support::runCorvane({"stop", std::to_string(geminiPort)});
  EXPECT_EQ(stopped.exitCode, 0) << stopped.out << stopped.err;
  for (int i = 0; i < 100 && testing_support::Socket().connect(geminiPort); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(testing_support::Socket().connect(geminiPort));
  for (const int32_t pid : geminiPids) EXPECT_FALSE(platform::processGone(pid)) << pid;
}

}  // namespace
}  // namespace corvane
