#include "mcp/tools.h"

#include <gtest/gtest.h>

namespace corvane::MCP {
namespace {

using nlohmann::json;

TEST(ToolsTest, ParseArguments) {
  auto args = [](const char* text) { return json::parse(text); };
  EXPECT_EQ(parse("stop", args(R"({"target":8080})"))->target, "8080");
  EXPECT_EQ(parse("stop", args(R"({"target":"8080","extra":1})"))->target, "8080");
  EXPECT_FALSE(parse("stop", args(R"({"target":""})")));
  EXPECT_FALSE(parse("stop", args(R"({"target":3.5})")));
  EXPECT_FALSE(parse("stop", args(R"({"target":true})")));
  EXPECT_FALSE(parse("stop", args(R"({})")));

  EXPECT_DOUBLE_EQ(parse("free_memory", args(R"({"gb":1023.9})"))->gb, 1023.9);
  EXPECT_FALSE(parse("free_memory", args(R"({"gb":0})")));
  EXPECT_FALSE(parse("free_memory", args(R"({"gb":1024})")));
  EXPECT_FALSE(parse("free_memory", args(R"({"gb":"2"})")));
  EXPECT_FALSE(parse("free_memory", args(R"({"gb":true})")));
  EXPECT_FALSE(parse("free_memory", args(R"({"gb":2,"dry_run":"yes"})"))->dryRun);
  EXPECT_TRUE(parse("free_memory", args(R"({"gb":2,"dry_run":true})"))->dryRun);

  EXPECT_EQ(parse("find_free_port", args("{}"))->start, 3000);
  EXPECT_EQ(parse("find_free_port", args(R"({"start":65535})"))->start, 65535);
  EXPECT_FALSE(parse("find_free_port", args(R"({"start":0})")));
  EXPECT_FALSE(parse("find_free_port", args(R"({"start":65536})")));
  EXPECT_FALSE(parse("find_free_port", args(R"({"start":"3000"})")));
  EXPECT_EQ(parse("list_running", args(R"({"anything":[1]})"))->kind, Call::Kind::listRunning);
}

}  // namespace
}  // namespace corvane::MCP
