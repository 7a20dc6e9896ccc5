// `corvane free` through the real executable. `free` picks its own rows, so the runs that may stop
// something are made as a user of their own that owns nothing but the daemons the test starts.
#include <filesystem>

#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "activity/activity_log.h"
#include "platform/process_table.h"
#include "support/process.h"
#include "support/listeners.h"
#include "support/user_files.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using testing_support::Process;
using testing_support::ProgramResult;

const std::string nothingToFree =
    "Nothing to free: no simulators, emulators or daemons that aren't pinned or building.\n";
const std::string shortOfOneGigabyte =
    "That's 0.0 GB of the 1.0 GB asked; the rest is in use, pinned or a database.\n";

// A user id nothing else on the machine runs as, with a home of its own for data, settings and
// temporary files. Processes are started under it through setpriv.
class OwnUser {
 public:
  OwnUser() : uid_(std::to_string(40000 + getpid() % 20000)) {
    char pattern[] = "/tmp/corvane-free-XXXXXX";
    if (const char* made = mkdtemp(pattern)) home_ = made;
    for (const char* dir : {"", "/data", "/config", "/tmp"}) {
      fs::create_directories(home_ + dir);
      if (chown((home_ + dir).c_str(), std::stoul(uid_), std::stoul(uid_)) != 0) home_.clear();
    }
  }
  ~OwnUser() {
    std::error_code ignored;
    if (!home_.empty()) fs::remove_all(home_, ignored);
  }

  bool ready() const { return !home_.empty(); }
  const std::string& home() const { return home_; }

  ProgramResult corvane(const std::vector<std::string>& arguments) const {
    return testing_support::runProgram(setpriv, as(CORVANE_EXE, arguments), "",
                                       {{"HOME", home_},
                                        {"XDG_DATA_HOME", home_ + "/data"},
                                        {"XDG_CONFIG_HOME", home_ + "/config"},
                                        {"TMPDIR", home_ + "/tmp"}});
  }

  // A Gradle daemon as the detection knows it, which may shrug off SIGTERM.
  std::unique_ptr<Process> gradleDaemon(const std::string& version, bool stubborn) const {
    const std::string script = std::string("import signal, time\n") +
                               (stubborn ? "signal.signal(signal.SIGTERM, signal.SIG_IGN)\n" : "") +
                               "print('ready', flush=True)\ntime.sleep(120)\n";
    auto daemon = start({"-c", script, "org.gradle.launcher.daemon.bootstrap.GradleDaemon", version});
    EXPECT_EQ(daemon->readLine(), "ready");
    return daemon;
  }

  // A Python web server in the user's folder, listening on a port of its own.
  std::unique_ptr<Process> server() const {
    const uint16_t port = testing_support::freePort();
    auto server = start({"-m", "http.server", std::to_string(port), "--bind", "127.0.0.1"});
    EXPECT_TRUE(testing_support::listening(port));
    return server;
  }

  std::vector<Activity> logged() const { return ActivityLog{home_ + "/data/Corvane/activity.jsonl"}.read(); }

  static constexpr const char* setpriv = "/usr/bin/setpriv";

 private:
  // The command line that runs `program` with `arguments` as the user.
  std::vector<std::string> as(const std::string& program, const std::vector<std::string>& arguments) const {
    std::vector<std::string> line{"--reuid=" + uid_, "--regid=" + uid_, "--clear-groups", program};
    line.insert(line.end(), arguments.begin(), arguments.end());
    return line;
  }
  std::unique_ptr<Process> start(const std::vector<std::string>& python) const {
    return std::make_unique<Process>(setpriv, as(testing_support::systemPython(), python),
                                     testing_support::ProcessOptions{.directory = home_});
  }

  std::string uid_;
  std::string home_;
};

TEST(FreeCommandTest, ExitCodesOnAUserOfItsOwn) {
  SKIP_WHERE_USER_FILES_CANNOT_MOVE();
  if (getuid() != 0 || access(OwnUser::setpriv, X_OK) != 0 || testing_support::systemPython().empty())
    GTEST_SKIP() << "needs root, setpriv and python3 to run as a user of its own";
  const OwnUser user;
  ASSERT_TRUE(user.ready());

  const auto nothing = user.corvane({"free", "1"});
  EXPECT_EQ(nothing.exitCode, 2) << nothing.err;
  EXPECT_EQ(nothing.out, nothingToFree);
  const auto nothingJSON = user.corvane({"free", "1", "--json"});
  EXPECT_EQ(nothingJSON.exitCode, 2);
  EXPECT_EQ(nothingJSON.out, "[]\n");

  const auto stubborn = user.gradleDaemon("8.7", true);
  const auto polite = user.gradleDaemon("8.8", false);
  // The password database has no entry for the user, and HOME is no stand-in for one: a server in the
  // folder HOME names is not in the home, so the folder names its project.
  const auto server = user.server();
  const auto status = nlohmann::json::parse(user.corvane({"status", "--json"}).out, nullptr, false);
  std::string project = "(no row)";
  for (const auto& item : status.is_array() ? status : nlohmann::json::array())
    if (item.value("id", "") == "server:" + std::to_string(server->pid())) project = item.value("project", "");
  EXPECT_EQ(project, fs::path(user.home()).filename().string()) << status;
  const auto freed = user.corvane({"free", "1"});
  EXPECT_EQ(freed.exitCode, 1) << freed.err;
  EXPECT_EQ(freed.out, "Stopped Gradle daemon 8.8 (0.0 GB).\nGradle daemon 8.7 is still running after 5 s. "
                       "`corvane stop gradle:" + std::to_string(stubborn->pid()) + " --force` kills it.\n"
                       "Freed 0.0 GB.\n" + shortOfOneGigabyte);
  EXPECT_TRUE(platform::processGone(polite->pid()));
  EXPECT_FALSE(platform::processGone(stubborn->pid()));
  const auto entries = user.logged();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].title, "Gradle daemon 8.8");
  EXPECT_EQ(entries[0].kind, Item::Kind::gradle);
  EXPECT_EQ(entries[0].reason, "corvane free");

  // A dry run in JSON: the plan alone, without the shortfall line.
  const auto plan = user.corvane({"free", "1", "--dry-run", "--json"});
  EXPECT_EQ(plan.exitCode, 0) << plan.err;
  const auto outcomes = nlohmann::json::parse(plan.out);
  ASSERT_EQ(outcomes.size(), 1u) << plan.out;
  EXPECT_EQ(outcomes[0]["id"], "gradle:" + std::to_string(stubborn->pid()));
  EXPECT_EQ(outcomes[0]["state"], "would-stop");
  EXPECT_GT(outcomes[0]["memory"].get<uint64_t>(), 0u);
  EXPECT_FALSE(outcomes[0].contains("reason"));
  EXPECT_EQ(user.logged().size(), 1u);
}

}  // namespace
}  // namespace corvane
