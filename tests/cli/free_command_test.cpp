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

constexpr const char* setpriv = "/usr/bin/setpriv";

// Runs as a user id nothing else on the machine runs as, with a home of its own for data, settings and
// temporary files. Processes are started under it through setpriv.
class FreeCommandTest : public testing::Test {
 protected:
  void SetUp() override {
    SKIP_WHERE_USER_FILES_CANNOT_MOVE();
    if (getuid() != 0 || access(setpriv, X_OK) != 0 || testing_support::systemPython().empty())
      GTEST_SKIP() << "needs root, setpriv and python3 to run as a user of its own";
    char pattern[] = "/tmp/corvane-free-XXXXXX";
    ASSERT_TRUE(mkdtemp(pattern));
    home = pattern;
    for (const char* dir : {"", "/data", "/config", "/tmp"}) {
      fs::create_directories(home + dir);
      ASSERT_EQ(chown((home + dir).c_str(), std::stoul(uid), std::stoul(uid)), 0);
    }
  }
  void TearDown() override {
    std::error_code ignored;
    if (!home.empty()) fs::remove_all(home, ignored);
  }

  // The command line that runs `program` with `arguments` as the user.
  std::vector<std::string> as(const std::string& program, const std::vector<std::string>& arguments) const {
    std::vector<std::string> line{"--reuid=" + uid, "--regid=" + uid, "--clear-groups", program};
    line.insert(line.end(), arguments.begin(), arguments.end());
    return line;
  }
  testing_support::ProgramResult corvane(const std::vector<std::string>& arguments) const {
    return testing_support::runProgram(setpriv, as(CORVANE_EXE, arguments), "",
                                       {{"HOME", home}, {"XDG_DATA_HOME", home + "/data"},
                                        {"XDG_CONFIG_HOME", home + "/config"}, {"TMPDIR", home + "/tmp"}});
  }
  // Python with `arguments` as the user, in the user's folder.
  std::unique_ptr<Process> python(const std::vector<std::string>& arguments) const {
    return std::make_unique<Process>(setpriv, as(testing_support::systemPython(), arguments),
                                     testing_support::ProcessOptions{.directory = home});
  }
  // A Gradle daemon as the detection knows it, which may shrug off SIGTERM.
  std::unique_ptr<Process> gradleDaemon(const std::string& version, bool stubborn) const {
    const std::string script = std::string("import signal, time\n") +
                               (stubborn ? "signal.signal(signal.SIGTERM, signal.SIG_IGN)\n" : "") +
                               "print('ready', flush=True)\ntime.sleep(120)\n";
    auto daemon = python({"-c", script, "org.gradle.launcher.daemon.bootstrap.GradleDaemon", version});
    EXPECT_EQ(daemon->readLine(), "ready");
    return daemon;
  }
  std::vector<Activity> logged() const { return ActivityLog{home + "/data/Corvane/activity.jsonl"}.read(); }

  const std::string uid = std::to_string(40000 + getpid() % 20000);
  std::string home;
};

TEST_F(FreeCommandTest, ExitCodesOnAUserOfItsOwn) {
  const auto nothing = corvane({"free", "1"});
  EXPECT_EQ(nothing.exitCode, 2) << nothing.err;
  EXPECT_EQ(nothing.out, "Nothing to free: no simulators, emulators or daemons that aren't pinned or building.\n");

  const auto stubborn = gradleDaemon("8.7", true);
  const auto polite = gradleDaemon("8.8", false);
  // The password database has no entry for the user, and HOME is no stand-in for one: a server in the
  // folder HOME names is not in the home, so the folder names its project.
  const uint16_t port = testing_support::freePort();
  const auto server = python({"-m", "http.server", std::to_string(port), "--bind", "127.0.0.1"});
  ASSERT_TRUE(testing_support::listening(port));
  const auto status = nlohmann::json::parse(corvane({"status", "--json"}).out, nullptr, false);
  std::string project = "(no row)";
  for (const auto& item : status.is_array() ? status : nlohmann::json::array())
    if (item.value("id", "") == "server:" + std::to_string(server->pid())) project = item.value("project", "");
  EXPECT_EQ(project, fs::path(home).filename().string()) << status;
  const auto freed = corvane({"free", "1"});
  EXPECT_EQ(freed.exitCode, 1) << freed.err;
  EXPECT_EQ(freed.out, "Stopped Gradle daemon 8.8 (0.0 GB).\nGradle daemon 8.7 is still running after 5 s. "
                       "`corvane stop gradle:" + std::to_string(stubborn->pid()) + " --force` kills it.\n"
                       "Freed 0.0 GB.\nThat's 0.0 GB of the 1.0 GB asked; the rest is in use, pinned or a database.\n");
  EXPECT_TRUE(platform::processGone(polite->pid()));
  EXPECT_FALSE(platform::processGone(stubborn->pid()));
  const auto entries = logged();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].title, "Gradle daemon 8.8");
  EXPECT_EQ(entries[0].reason, "corvane free");

  // A dry run in JSON: the plan alone, without the shortfall line.
  const auto plan = corvane({"free", "1", "--dry-run", "--json"});
  EXPECT_EQ(plan.exitCode, 0) << plan.err;
  const auto outcomes = nlohmann::json::parse(plan.out);
  ASSERT_EQ(outcomes.size(), 1u) << plan.out;
  EXPECT_EQ(outcomes[0]["id"], "gradle:" + std::to_string(stubborn->pid()));
  EXPECT_EQ(outcomes[0]["state"], "would-stop");
  EXPECT_EQ(logged().size(), 1u);
}

}  // namespace
}  // namespace corvane
