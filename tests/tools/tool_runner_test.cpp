#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tools/tools.h"
#include "support/fake_programs.h"

namespace corvane {
namespace {

using testing_support::writeScript;

// Each test has a temporary directory of its own, so that what other tests leave running can't put
// files among those it counts.
class RunTest : public testing::Test {
 protected:
  bool outputFilesLeft() const {
    for (const auto& entry : std::filesystem::directory_iterator(tmp_))
      if (entry.path().filename().string().starts_with("corvane-")) return true;
    return false;
  }

 private:
  const std::string tmp_ = testing_support::makeTempDir("tmp");
  const testing_support::ScopedEnv tmpdir_{"TMPDIR", tmp_};
};

// Nothing comes back from a program that can't start or that the time-out ends, and no output file is
// left behind by any run.
TEST_F(RunTest, StatusAndStandardOutputOrNothing) {
  const std::string dir = testing_support::makeTempDir("run");
  const auto result = run(writeScript(dir + "/tool", "printf '%s|' \"$@\"; echo err >&2; read l && echo in; exit 3\n"),
                          {"a b", "", "c"}, 5);
  ASSERT_TRUE(result);
  EXPECT_EQ(result->status, 3);
  EXPECT_EQ(result->data, "a b||c|");

  // The time-out sends SIGTERM: a program that exits by itself on it gives its own status.
  EXPECT_FALSE(run(writeScript(dir + "/slow", "echo started; exec sleep 10\n"), {}, 0.2));
  const auto polite = run(writeScript(dir + "/polite", "trap 'echo bye; exit 7' TERM\nwhile :; do sleep 0.05; done\n"),
                          {}, 0.3);
  ASSERT_TRUE(polite);
  EXPECT_EQ(polite->status, 7);
  EXPECT_EQ(polite->data, "bye\n");

  const std::string plain = writeScript(dir + "/plain", "exit 0\n");
  std::filesystem::permissions(plain, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_FALSE(run(plain, {}, 1));
  EXPECT_FALSE(run(dir + "/missing", {}, 1));
  EXPECT_FALSE(outputFilesLeft());
  testing_support::ScopedEnv tmp("TMPDIR", dir + "/missing");
  EXPECT_FALSE(run(writeScript(dir + "/ok", "exit 0\n"), {}, 1));
}

TEST_F(RunTest, ConcurrentRunsKeepTheirOwnOutput) {
  const std::string script =
      writeScript(testing_support::makeTempDir("run") + "/echo", "sleep 0.05; echo $1; exit $1\n");
  std::vector<std::optional<Tools::Output>> results(8);
  std::vector<std::thread> threads;
  for (size_t i = 0; i < results.size(); ++i)
    threads.emplace_back([&, i] { results[i] = run(script, {std::to_string(i)}, 5); });
  for (auto& thread : threads) thread.join();
  for (size_t i = 0; i < results.size(); ++i) {
    ASSERT_TRUE(results[i]);
    EXPECT_EQ(results[i]->status, static_cast<int32_t>(i));
    EXPECT_EQ(results[i]->data, std::to_string(i) + "\n");
  }
}

}  // namespace
}  // namespace corvane
