// One classification run over a large generated process table: deep launch chains, many listeners,
// dev servers under shells and agents, JVM daemons, database workers and plain helpers.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>

#include "detect/pipeline.h"

namespace {

using corvane::Proc;
using corvane::World;

class Generator {
 public:
  explicit Generator(size_t count) : count_(count) {}

  World world() {
    World world;
    procs_ = &world.snapshot.procs;
    procs_->reserve(count_ + 64);
    while (procs_->size() < count_) {
      switch (random_() % 8) {
        case 0: devServer(); break;
        case 1: agentSession(); break;
        case 2: database(); break;
        case 3: jvmDaemons(); break;
        case 4: deepChain(); break;
        case 5: bundler(); break;
        default: helpers(); break;
      }
    }
    procs_->resize(count_);
    // The kernel lists pids in no particular order; detection sorts them itself.
    std::shuffle(procs_->begin(), procs_->end(), random_);
    return world;
  }

 private:
  int32_t add(int32_t ppid, const std::string& path, std::vector<std::string> args, const std::string& cwd,
              std::vector<uint16_t> listening = {}) {
    Proc p;
    p.pid = nextPid_++;
    p.ppid = ppid;
    p.path = path;
    p.name = corvane::lastPathComponent(path);
    p.args = std::move(args);
    p.cwd = cwd;
    p.footprint = 1'000'000 + random_() % 500'000'000;
    p.cpuTimeNanoseconds = random_() % 1'000'000'000'000;
    p.listening = std::move(listening);
    p.inbound = static_cast<int64_t>(random_() % 3);
    procs_->push_back(std::move(p));
    return procs_->back().pid;
  }

  std::string project() { return "/Users/dev/project" + std::to_string(random_() % 400); }
  uint16_t port() { return static_cast<uint16_t>(3000 + random_() % 60000); }

  int32_t terminal(const std::string& cwd) {
    const int32_t app = add(1, "/Applications/iTerm.app/Contents/MacOS/iTerm2", {"iTerm2"}, "/");
    return add(app, "/bin/zsh", {"-zsh"}, cwd);
  }

  void devServer() {
    static const char* tools[] = {"next", "vite", "astro", "remix", "webpack", "nuxi", "wrangler", "server.js"};
    const std::string cwd = project();
    const int32_t shell = terminal(cwd);
    const int32_t npm = add(shell, node_, {"npm run dev"}, cwd);
    const int32_t sh = add(npm, "/bin/sh", {"sh", "-c", "dev"}, cwd);
    const std::string tool = tools[random_() % 8];
    const int32_t server = add(sh, node_, {"node", cwd + "/node_modules/.bin/" + tool, "dev"}, cwd, {port(), port()});
    for (int i = 0; i < 3; ++i) add(server, node_, {"node", cwd + "/node_modules/worker.js"}, cwd);
  }

  void agentSession() {
    const std::string cwd = project();
    const int32_t shell = terminal(cwd);
    const int32_t agent = add(shell, "/Users/dev/.local/share/claude/versions/2.0.14", {"claude"}, cwd);
    add(agent, node_, {"node", "/Users/dev/.npm/_npx/mcp-server"}, cwd);
    const int32_t command = add(agent, "/bin/zsh", {"/bin/zsh", "-c", "-l", "npm run dev"}, cwd);
    const int32_t npm = add(command, node_, {"npm run dev"}, cwd);
    add(npm, node_, {"node", cwd + "/node_modules/.bin/vite"}, cwd, {port()});
    add(agent, "/usr/bin/git", {"git", "status"}, cwd);
  }

  void database() {
    const std::string path = "/opt/homebrew/opt/postgresql@16/bin/postgres";
    const int32_t server = add(1, path, {path, "-D", "/opt/homebrew/var/pg"}, "/opt/homebrew/var/pg", {port()});
    for (int i = 0; i < 4; ++i) add(server, path, {"postgres: worker"}, "/opt/homebrew/var/pg");
  }

  void jvmDaemons() {
    const std::string java = "/usr/lib/jvm/bin/java";
    const int32_t gradle = add(1, java,
                               {java, "-Xmx2g", "-cp", "gradle-launcher.jar",
                                "org.gradle.launcher.daemon.bootstrap.GradleDaemon", "8.7"},
                               "/Users/dev/.gradle/daemon/8.7", {port()});
    add(gradle, java, {java, "-cp", "kotlin.jar", "org.jetbrains.kotlin.daemon.KotlinCompileDaemon"}, "/", {port()});
  }

  // A long chain of command shells in one folder, as a build script that calls itself makes.
  void deepChain() {
    const std::string cwd = project();
    int32_t parent = terminal(cwd);
    for (int depth = 0; depth < 60; ++depth) parent = add(parent, "/bin/bash", {"bash", "-c", "make -C sub"}, cwd);
    add(parent, "/usr/bin/python3", {"python3", "-m", "http.server"}, cwd, {port()});
  }

  void bundler() {
    const std::string cwd = project();
    const int32_t shell = terminal(cwd);
    const int32_t npx = add(shell, node_, {"npm exec react-native start"}, cwd);
    add(npx, node_, {"node", cwd + "/node_modules/.bin/react-native", "start"}, cwd, {8081});
  }

  void helpers() {
    const int32_t app = add(1, "/Applications/Slack.app/Contents/MacOS/Slack", {"Slack"}, "/", {port()});
    for (int i = 0; i < 6; ++i)
      add(app, "/Applications/Slack.app/Contents/Frameworks/Slack Helper.app/Contents/MacOS/Slack Helper",
          {"Slack Helper", "--type=renderer"}, "/", i == 0 ? std::vector<uint16_t>{port()} : std::vector<uint16_t>{});
    add(1, "/usr/libexec/rapportd", {"rapportd"}, "/", {port()});
  }

  size_t count_;
  std::vector<Proc>* procs_ = nullptr;
  int32_t nextPid_ = 100;
  std::mt19937_64 random_{20260302};
  const std::string node_ = "/opt/homebrew/bin/node";
};

void BM_Detect(benchmark::State& state) {
  const World world = Generator(static_cast<size_t>(state.range(0))).world();
  size_t rows = 0;
  for (auto _ : state) {
    auto items = corvane::detect(world);
    rows = items.size();
    benchmark::DoNotOptimize(items);
  }
  state.counters["rows"] = static_cast<double>(rows);
  // Processes per second: equal at both sizes when a run is linear.
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(BM_Detect)->Arg(10'000)->Arg(20'000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
