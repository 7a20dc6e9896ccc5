// `corvane status` on this machine, with a dev server the test starts itself in a project of its own.
// Which rows a scan finds, and how the report lays them out, are the detection's and the report's;
// this proves the command puts the two together.
#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/fake_programs.h"
#include "support/process.h"
#include "support/listeners.h"
#include "support/user_files.h"

namespace corvane {
namespace {

using testing_support::runCorvane;

TEST(StatusCommandTest, ListsADevServerUnderItsProject) {
  SKIP_WHERE_USER_FILES_CANNOT_MOVE();
  const std::string python = testing_support::systemPython();
  if (python.empty()) GTEST_SKIP() << "needs python3";

  namespace fs = std::filesystem;
  const std::string root = fs::canonical(testing_support::makeTempDir("status"));
  fs::create_directories(root + "/shop/.git");
  fs::create_directories(root + "/shop/web");
  const uint16_t port = testing_support::freePort();
  testing_support::Process web(python, {"-m", "http.server", std::to_string(port), "--bind", "127.0.0.1"},
                               {.directory = root + "/shop/web"});
  ASSERT_TRUE(testing_support::listening(port));

  const auto text = runCorvane({"status"});
  EXPECT_EQ(text.exitCode, 0) << text.err;
  // No other row is in the test's own project, so the server's line follows the group's heading.
  const std::string server = "server:" + std::to_string(web.pid());
  const size_t start = text.out.find("\nshop\n  Python :" + std::to_string(port) + " ");
  ASSERT_NE(start, std::string::npos) << text.out;
  const std::string line = text.out.substr(start + 6, text.out.find('\n', start + 6) - start - 6);
  EXPECT_TRUE(line.ends_with("  server \xC2\xB7 1 proc \xC2\xB7 " + server)) << line;

  const auto json = runCorvane({"status", "--json"});
  EXPECT_EQ(json.exitCode, 0);
  nlohmann::json row;
  for (const auto& item : nlohmann::json::parse(json.out))
    if (item["id"] == server) row = item;
  EXPECT_EQ(row["project"], "shop") << json.out;
}

}  // namespace
}  // namespace corvane
