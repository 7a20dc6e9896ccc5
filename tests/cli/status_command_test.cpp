// `corvane status` on this machine, with a dev server and a database the test starts itself.
#include <filesystem>

#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/fake_programs.h"
#include "support/process.h"
#include "support/listeners.h"
#include "support/user_files.h"

namespace corvane {
namespace {

using testing_support::Process;
using testing_support::freePort;
using testing_support::listening;
using testing_support::runCorvane;

// The heading of the group a row line stands in; "" when the line is missing.
std::string groupOf(const std::string& report, const std::string& lineStart) {
  std::string group;
  for (size_t at = 0, end; at < report.size(); at = end + 1) {
    end = report.find('\n', at);
    const std::string line = report.substr(at, end - at);
    if (!line.empty() && line[0] != ' ') group = line;
    if (line.rfind(lineStart, 0) == 0) return group;
  }
  return "";
}

const nlohmann::json* row(const nlohmann::json& items, const std::string& id) {
  for (const auto& item : items)
    if (item["id"] == id) return &item;
  return nullptr;
}

TEST(StatusCommandTest, ListsADevServerUnderItsProjectAndADatabase) {
  SKIP_WHERE_USER_FILES_CANNOT_MOVE();
  const std::string python = testing_support::systemPython();
  const std::string redis = "/usr/bin/redis-server";
  if (python.empty() || access(redis.c_str(), X_OK) != 0) GTEST_SKIP() << "needs python3 and redis-server";

  namespace fs = std::filesystem;
  const std::string root = fs::canonical(testing_support::makeTempDir("status"));
  fs::create_directories(root + "/shop/.git");
  fs::create_directories(root + "/shop/web");
  const uint16_t webPort = freePort(), redisPort = freePort();
  Process web(python, {"-m", "http.server", std::to_string(webPort), "--bind", "127.0.0.1"},
                   {.directory = root + "/shop/web"});
  Process db(redis, {"--port", std::to_string(redisPort), "--bind", "127.0.0.1", "--save", "",
                          "--appendonly", "no", "--dir", root},
                  {.directory = root});
  ASSERT_TRUE(listening(webPort) && listening(redisPort));

  auto text = runCorvane({"status"});
  EXPECT_EQ(text.exitCode, 0) << text.err;
  const std::string server = "server:" + std::to_string(web.pid());
  const std::string database = "db:" + std::to_string(db.pid());
  EXPECT_EQ(groupOf(text.out, "  Python :" + std::to_string(webPort) + " "), "shop") << text.out;
  EXPECT_NE(text.out.find("  server \xC2\xB7 1 proc \xC2\xB7 " + server + "\n"), std::string::npos) << text.out;
  EXPECT_EQ(groupOf(text.out, "  Redis :" + std::to_string(redisPort) + " "), "Databases") << text.out;
  EXPECT_NE(text.out.find("  database \xC2\xB7 guarded \xC2\xB7 1 proc \xC2\xB7 " + database), std::string::npos);
  EXPECT_EQ(text.out.rfind("Dev stack ", 0), 0u);

  const auto json = runCorvane({"status", "--json"});
  EXPECT_EQ(json.exitCode, 0);
  const auto items = nlohmann::json::parse(json.out);
  const auto* s = row(items, server);
  ASSERT_NE(s, nullptr) << json.out;
  EXPECT_EQ((*s)["project"], "shop");
  EXPECT_EQ((*s)["cwd"], root + "/shop/web");
  EXPECT_EQ((*s)["ports"], nlohmann::json::array({webPort}));
  const auto* d = row(items, database);
  ASSERT_NE(d, nullptr) << json.out;
  EXPECT_EQ((*d)["key"], "db:redis-server");
  EXPECT_EQ((*d)["guarded"], true);
}

}  // namespace
}  // namespace corvane
