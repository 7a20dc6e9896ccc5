// How soon `corvane mcp` answers an agent: the initialize reply counted from the moment the process is
// spawned (an agent waits for it before it can call anything), with 500 extra processes of the user, and find_free_port while ports 3000 to
// 3099 are taken, counted per call on a server that has started. Runs the corvane built beside it, or
// $CORVANE_EXE, with data and settings in a temporary directory.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "children.h"

#include "support/process.h"
#include "platform/paths.h"

namespace {

using corvane::testing_support::Process;

std::string corvaneExecutable() {
  if (const char* named = std::getenv("CORVANE_EXE")) return named;
  const std::string own = corvane::platform::ownExecutablePath();
  return own.substr(0, own.rfind('/') + 1) + "corvane";
}

const std::string initialize =
    R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":"2025-06-18",)"
    R"("capabilities":{},"clientInfo":{"name":"bench","version":"1"}}})";

std::string findFreePort(int id) {
  return R"({"jsonrpc":"2.0","id":)" + std::to_string(id) +
         R"(,"method":"tools/call","params":{"name":"find_free_port","arguments":{"start":3000}}})";
}

// The tool discovery of a first run looks up every tool in a login shell and remembers the misses; one
// session that waits for it leaves the settings as a user's machine has them from then on.
void settle(const std::string& exe) {
  Process server(exe, {"mcp"}, {.grace = 5});
  server.writeLine(findFreePort(1));
  server.readLine(60);
}

void BM_InitializeReplyAfterSpawn(benchmark::State& state) {
  const std::string exe = corvaneExecutable();
  settle(exe);
  const bench::Children children(500);
  for (auto _ : state) {
    const auto spawned = std::chrono::steady_clock::now();
    Process server(exe, {"mcp"}, {.grace = 5});
    server.writeLine(initialize);
    const auto reply = server.readLine(10);
    const auto answered = std::chrono::steady_clock::now();
    if (!reply || reply->find("\"protocolVersion\":\"2025-06-18\"") == std::string::npos) {
      state.SkipWithError("no initialize reply");
      break;
    }
    state.SetIterationTime(std::chrono::duration<double>(answered - spawned).count());
    server.closeInput();
    server.waitExit(10);
  }
}
BENCHMARK(BM_InitializeReplyAfterSpawn)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(21)
    ->ReportAggregatesOnly(true)
    ->Unit(benchmark::kMillisecond);

// Listeners on 0.0.0.0 ports 3000 to 3099 for the object's lifetime; a port that another program holds
// is taken all the same.
class TakenPorts {
 public:
  TakenPorts() {
    for (uint16_t port = 3000; port < 3100; ++port) {
      const int fd = socket(AF_INET, SOCK_STREAM, 0);
      sockaddr_in address{};
      address.sin_family = AF_INET;
      address.sin_port = htons(port);
      address.sin_addr.s_addr = htonl(INADDR_ANY);
      if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 && listen(fd, 1) == 0)
        fds_.push_back(fd);
      else
        close(fd);
    }
  }
  ~TakenPorts() {
    for (int fd : fds_) close(fd);
  }
  size_t held() const { return fds_.size(); }

 private:
  std::vector<int> fds_;
};

void BM_FindFreePortPast100Taken(benchmark::State& state) {
  const TakenPorts taken;
  Process server(corvaneExecutable(), {"mcp"}, {.grace = 5});
  server.writeLine(initialize);
  // The first tool call also waits for the server's tool discovery: start-up, not the call.
  server.writeLine(findFreePort(2));
  server.readLine(10);
  const auto first = server.readLine(60);
  if (!first) state.SkipWithError("no find_free_port reply");
  int id = 3;
  std::string answer;
  for (auto _ : state) {
    server.writeLine(findFreePort(id++));
    const auto reply = server.readLine(10);
    if (!reply) {
      state.SkipWithError("no find_free_port reply");
      break;
    }
    answer = *reply;
  }
  const auto text = answer.find("Port ");
  state.SetLabel(std::to_string(taken.held()) + " held by the bench; " +
                 (text == std::string::npos ? answer : answer.substr(text, answer.find('"', text) - text)));
}
BENCHMARK(BM_FindFreePortPast100Taken)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly(true)
    ->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
  // The servers record tool misses in the settings: never in the real user's.
  char pattern[] = "/tmp/corvane-bench-XXXXXX";
  const char* root = mkdtemp(pattern);
  if (!root) return 1;
  const std::string base(root);
  for (const char* name : {"data", "config"}) std::filesystem::create_directories(base + "/" + name);
  setenv("XDG_DATA_HOME", (base + "/data").c_str(), 1);
  setenv("XDG_CONFIG_HOME", (base + "/config").c_str(), 1);

  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::error_code ignored;
  std::filesystem::remove_all(base, ignored);
  return 0;
}
