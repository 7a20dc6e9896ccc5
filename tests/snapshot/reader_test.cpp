// The reader against processes the tests start themselves.
#include "snapshot/reader.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <thread>
#include <sys/times.h>
#include <tuple>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <gmock/gmock.h>

#include "platform/paths.h"
#include "platform/process_table.h"
#include "support/fake_programs.h"
#include "support/listeners.h"
#include "support/process.h"

namespace corvane {
namespace {

using testing_support::Process;
using ::testing::ElementsAre;
using testing_support::Socket;

const Proc* find(const Snapshot& snapshot, pid_t pid) {
  for (const auto& proc : snapshot.procs)
    if (proc.pid == pid) return &proc;
  return nullptr;
}

// A pre-fork server started in a project folder: the workers (and a worker's own child) hold the
// listening sockets they inherited, and each counts the connections it accepted itself, never the
// outgoing ones it holds.
TEST(ReaderTest, ForkedServerInATemporaryProject) {
  const std::string python = testing_support::systemPython();
  if (python.empty()) GTEST_SKIP() << "no python3";
  const std::string project = std::filesystem::canonical(testing_support::makeTempDir("project"));
  Socket database;
  const uint16_t databasePort = database.listen();
  ASSERT_NE(databasePort, 0);
  const char* script =
      "import os, socket, sys, time\n"
      "spent = time.process_time()\n"  // enough CPU time to show in clock ticks, however fast the start
      "while time.process_time() - spent < 0.03: pass\n"
      "socks = [socket.socket() for _ in range(2)]\n"
      "for s in socks: s.bind(('127.0.0.1', 0)); s.listen(8)\n"
      "print(*(s.getsockname()[1] for s in socks), flush=True)\n"
      "outgoing = socket.create_connection(('127.0.0.1', int(sys.argv[1])))\n"
      "master = os.getpid()\n"
      "def live(line, ancestor):\n"  // each fork ends once its parent has gone
      "    os.write(1, f'{line} {os.getpid()}\\n'.encode())\n"  // one write: the forks share the pipe
      "    while os.getppid() == ancestor: time.sleep(0.05)\n"
      "    os._exit(0)\n"
      "if os.fork() == 0:\n"
      "    conns = [socks[0].accept()[0] for _ in range(2)]\n"
      "    live('accepted', master)\n"
      "if os.fork() == 0:\n"
      "    worker = os.getpid()\n"
      "    if os.fork() == 0: live('grandchild', worker)\n"
      "    live('worker', master)\n"
      "conns = [socks[1].accept()[0] for _ in range(3)]\n"
      "os.write(1, f'master {master}\\n'.encode())\n"
      "time.sleep(60)\n";
  const std::vector<std::string> args{"-c", script, std::to_string(databasePort)};
  const Date before = now();
  Process server(python, args, {.directory = project});
  ASSERT_GT(server.pid(), 0);
  std::istringstream portLine(server.readLine().value_or(""));
  uint16_t first = 0, second = 0;
  ASSERT_TRUE(portLine >> first >> second);
  Socket clients[5];
  for (int i = 0; i < 5; ++i) ASSERT_TRUE(clients[i].connect(i < 2 ? first : second));
  std::map<std::string, pid_t> forks;
  for (int i = 0; i < 4; ++i) {
    const std::string text = server.readLine().value_or("");
    std::istringstream line(text);
    std::string role;
    pid_t pid = 0;
    ASSERT_TRUE(line >> role >> pid) << text;
    forks[role] = pid;
  }

  // CPU time is counted in clock ticks, and a fresh server may not have used one yet; this process goes
  // on until it has, so that its snapshot must show some.
  for (tms used{}; times(&used), used.tms_utime + used.tms_stime == 0;) {
  }
  ArgsCache cache;
  const Snapshot snapshot = corvane::snapshot(cache);
  const std::vector<std::pair<pid_t, int64_t>> expected = {
      {server.pid(), 3}, {forks["accepted"], 2}, {forks["worker"], 0}, {forks["grandchild"], 0}};
  for (const auto& [pid, inbound] : expected) {
    const Proc* proc = find(snapshot, pid);
    ASSERT_NE(proc, nullptr) << pid;
    EXPECT_THAT(proc->listening, ElementsAre(std::min(first, second), std::max(first, second))) << pid;
    EXPECT_EQ(proc->inbound, inbound) << pid;
  }
  const Proc* proc = find(snapshot, server.pid());
  EXPECT_EQ(proc->ppid, getpid());
  EXPECT_EQ(proc->args[0], python);
  EXPECT_EQ(std::vector(proc->args.begin() + 1, proc->args.end()), args);
  // Started through a link (python3 -> python3.11), it keeps the name it was started under.
  EXPECT_TRUE(std::filesystem::equivalent(proc->path, python));
  EXPECT_EQ(proc->name, lastPathComponent(python));
  EXPECT_EQ(proc->name, lastPathComponent(proc->path));
  EXPECT_EQ(proc->cwd, project);
  EXPECT_GT(proc->footprint, 0u);
  const Proc* self = find(snapshot, getpid());
  ASSERT_NE(self, nullptr);
  EXPECT_GT(self->cpuTimeNanoseconds, 0u);
  EXPECT_FALSE(proc->responsible);
  // Start times come in clock ticks after a boot time of whole seconds.
  EXPECT_GE(proc->started, before - std::chrono::seconds(1));
  EXPECT_LE(proc->started, snapshot.taken);
  EXPECT_TRUE(std::is_sorted(snapshot.procs.begin(), snapshot.procs.end(),
                             [](const Proc& a, const Proc& b) { return a.pid < b.pid; }));

  // The same when every socket of the user has been matched to some process before the workers
  // come, as happens when the workers come last in the table.
  platform::ProcessTable table;
  for (const pid_t pid : table.pids())
    if (pid != forks["worker"] && pid != forks["grandchild"]) table.read(pid);
  for (const pid_t pid : {forks["worker"], forks["grandchild"]}) {
    const auto record = table.read(pid);
    ASSERT_TRUE(record);
    std::set<uint16_t> listening;
    for (const auto& socket : record->sockets)
      if (socket.listening) listening.insert(socket.port);
    EXPECT_THAT(listening, ElementsAre(std::min(first, second), std::max(first, second))) << pid;
  }
}

// The system's own programs are never servers nor signalled, but only its services keep their sockets
// unread: a distribution's database or web server under sbin keeps its ports.
TEST(ReaderTest, SystemProgramsAndWhoseSocketsAreRead) {
  const std::vector<std::tuple<std::string_view, bool, bool>> cases = {
      {"/System/Library/CoreServices/launchservicesd", true, false},
      {"/usr/libexec/rapportd", true, false},
      {"/usr/sbin/mariadbd", true, true},
      {"/sbin/rpcbind", true, true},
      {"/Library/Apple/System/Library/CoreServices/XProtect", true, true},
      {"/usr/bin/node", false, true},
      {"/home/dev/System/server", false, true},
  };
  for (const auto& [path, system, sockets] : cases) {
    EXPECT_EQ(platform::isSystemProgram(path), system) << path;
    EXPECT_EQ(platform::socketsWanted(path), sockets) << path;
  }
}

// One snapshot of what this test starts: a sleeper whose pid has a cache entry of an earlier process,
// a zombie, processes of other users, and sockets of this process.
TEST(ReaderTest, ArgsCacheZombieOtherUsersAndOwnSockets) {
  const std::string folder = std::filesystem::canonical(testing_support::makeTempDir("gone"));
  Process sleeper("/bin/sleep", {"60"}, {.directory = folder});
  Process zombie([] {});
  ASSERT_GT(sleeper.pid(), 0);
  ASSERT_GT(zombie.pid(), 0);
  const int32_t vanished = 0x7ffffff0;  // above any pid_max
  ArgsCache cache;
  cache[sleeper.pid()] = CachedArgs{Date{}, {"an earlier process with this pid"}};
  cache[vanished] = CachedArgs{Date{}, {"gone"}};

  // A port listened on over IPv4 and IPv6 counts once; a dual-stack listener and its IPv4 connection
  // show in the IPv6 table only.
  Socket v4, v6(AF_INET6), dualStack(AF_INET6), client;
  const uint16_t port = v4.listen();
  ASSERT_NE(port, 0);
  const bool ipv6 = v6.fd >= 0 && v6.listen(port) == port;  // else no IPv6 loopback
  const uint16_t dualPort = ipv6 ? dualStack.listen(0, true) : 0;
  ASSERT_TRUE(!ipv6 || client.connect(dualPort));
  const Socket accepted = ipv6 ? dualStack.accepted() : Socket(-1);

  const uid_t user = getuid();
  std::vector<pid_t> others;
  std::vector<std::unique_ptr<Process>> children;
#ifdef __linux__
  // Only Linux lists zombies among the user's processes. A folder removed under a process reads as it was.
  std::filesystem::remove(folder);
  if (user == 0) {
    // Another real user behind root as the effective one (whose /proc entry shows root, like a setuid
    // program's).
    children.push_back(std::make_unique<Process>([] {
      if (setresgid(65534, 65534, 65534) != 0 || setresuid(65534, 0, 0) != 0) _exit(1);
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      pause();
    }));
    others.push_back(children.back()->pid());
  } else
#endif
  if (const auto owner = platform::processOwner(1); owner && owner->realUid != user) {
    others.push_back(1);
  }
  const auto settled = [&] {
    for (const pid_t other : others)
      if (const auto owner = platform::processOwner(other); !owner || owner->realUid == user) return false;
    return platform::processGone(zombie.pid());
  };
  for (int i = 0; i < 200 && !settled(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));

  Snapshot snapshot = corvane::snapshot(cache);
  const Proc* self = find(snapshot, getpid());
  ASSERT_NE(self, nullptr);
  EXPECT_EQ(self->ppid, getppid());
  EXPECT_EQ(platform::processOwner(getpid())->path, platform::ownExecutablePath());
  EXPECT_FALSE(platform::processOwner(vanished));
  // The ancestry of a process reads its processes the same way, parent first, without their sockets.
  const std::vector<Proc> chain = ancestors(sleeper.pid());
  ASSERT_GE(chain.size(), 2u);
  EXPECT_EQ(std::tie(chain[0].pid, chain[0].path, chain[0].args, chain[0].cwd, chain[0].started),
            std::tie(self->pid, self->path, self->args, self->cwd, self->started));
  EXPECT_TRUE(chain[0].listening.empty());
  EXPECT_EQ(chain[1].pid, getppid());
  EXPECT_TRUE(ancestors(vanished).empty());
  EXPECT_EQ(std::count(self->listening.begin(), self->listening.end(), port), 1);
  EXPECT_EQ(std::count(self->listening.begin(), self->listening.end(), dualPort), ipv6 ? 1 : 0);
  EXPECT_EQ(self->inbound, ipv6 ? 1 : 0);
  const Proc* proc = find(snapshot, sleeper.pid());
  ASSERT_NE(proc, nullptr);
  EXPECT_THAT(proc->args, ElementsAre("/bin/sleep", "60"));
  EXPECT_EQ(proc->cwd, folder);
  ASSERT_TRUE(cache.contains(sleeper.pid()));
  EXPECT_EQ(cache[sleeper.pid()].started, proc->started);
  EXPECT_EQ(cache[sleeper.pid()].args, proc->args);
  EXPECT_FALSE(cache.contains(vanished));
  EXPECT_EQ(cache.size(), snapshot.procs.size());
  for (const auto& p : snapshot.procs) EXPECT_TRUE(cache.contains(p.pid)) << p.pid;
#ifdef __linux__
  proc = find(snapshot, zombie.pid());
  ASSERT_NE(proc, nullptr);
  EXPECT_TRUE(proc->args.empty() && proc->listening.empty());
  EXPECT_EQ(std::tie(proc->path, proc->name, proc->cwd), std::tuple("", "", "/"));
#endif
  for (const pid_t other : others) {
    EXPECT_EQ(find(snapshot, other), nullptr) << other;
    const auto owner = platform::processOwner(other);
    ASSERT_TRUE(owner) << other;
    EXPECT_NE(owner->realUid, user);
  }
  for (const auto& p : snapshot.procs)
    if (const auto owner = platform::processOwner(p.pid)) {
      EXPECT_EQ(owner->realUid, user) << p.pid;
    }

  // With the start time matching, the arguments are taken from the cache and not read again.
  cache[sleeper.pid()].args = {"cached"};
  snapshot = corvane::snapshot(cache);
  proc = find(snapshot, sleeper.pid());
  ASSERT_NE(proc, nullptr);
  EXPECT_THAT(proc->args, ElementsAre("cached"));
}

}  // namespace
}  // namespace corvane
