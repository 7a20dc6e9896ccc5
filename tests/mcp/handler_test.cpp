#include "mcp/handler.h"

#include <gtest/gtest.h>

namespace corvane::MCP {
namespace {

using nlohmann::json;

struct Recorder {
  std::vector<Call> calls;
  Runner runner() {
    return [this](const Call& c) {
      calls.push_back(c);
      return Reply{"ran/" + std::to_string(static_cast<int>(c.kind)), false};
    };
  }
};

const std::string parseError = R"({"error":{"code":-32700,"message":"Parse error"},"id":null,"jsonrpc":"2.0"})";

std::optional<json> send(const std::string& line, Recorder* recorder = nullptr) {
  Recorder local;
  auto reply = handle(line, "1.2", (recorder ? recorder : &local)->runner());
  if (!reply) return std::nullopt;
  EXPECT_EQ(reply->find('\n'), std::string::npos);
  return json::parse(*reply);
}

TEST(HandlerTest, ErrorsAndNestingBeyond512Levels) {
  using namespace std::string_literals;
  for (const std::string& line : {"{"s, "   "s, "42"s, "\"ping\""s, "{\"id\":1,\"method\":\"p\xff\"}"s,
                                  "{\"id\":1,\"method\":\"ping\"}\0garbage"s})
    EXPECT_EQ(handle(line, "1", nullptr), parseError) << line;

  auto batch = send(R"([{"jsonrpc":"2.0","id":1,"method":"ping"}])");
  EXPECT_EQ(*batch, json::parse(R"({"error":{"code":-32600,"message":"Invalid request"},"id":null,"jsonrpc":"2.0"})"));
  EXPECT_EQ(*send(R"({"id":7})"),
            json::parse(R"({"error":{"code":-32600,"message":"Invalid request"},"id":7,"jsonrpc":"2.0"})"));
  EXPECT_EQ(send(R"({"id":7,"method":3})")->at("error")["code"], -32600);
  EXPECT_EQ(send(R"({"id":"a","method":"resources/list"})")->at("error")["message"],
            "Method not found: resources/list");
  EXPECT_EQ(send(R"({"id":1,"method":"tools/call","params":{}})")->at("error")["message"], "Unknown tool: ");
  EXPECT_EQ(send(R"({"id":1,"method":"tools/call","params":{"name":"reboot"}})")->at("error")["code"], -32602);

  // Nesting beyond 512 levels is a parse error, not a crash.
  auto nested = [](int depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  EXPECT_EQ(handle(R"({"id":1,"method":"ping","params":{"x":)" + nested(200000) + "}}", "1", nullptr), parseError);
  // The message, its params and 510 arrays make 512 levels; one more is too many.
  EXPECT_EQ(handle(R"({"id":1,"method":"ping","params":{"x":)" + nested(510) + "}}", "1", nullptr),
            R"({"id":1,"jsonrpc":"2.0","result":{}})");
  EXPECT_EQ(handle(R"({"id":1,"method":"ping","params":{"x":)" + nested(511) + "}}", "1", nullptr), parseError);
}

TEST(HandlerTest, NotificationsAreSilentRepliesEchoTheirIdsToolsCallRunsParsedCallsOnly) {
  EXPECT_FALSE(send(R"({"jsonrpc":"2.0","method":"ping"})"));
  EXPECT_FALSE(send(R"({"jsonrpc":"2.0","id":null,"method":"ping"})"));
  Recorder r;
  EXPECT_FALSE(send(R"({"method":"tools/call","params":{"name":"stop","arguments":{"target":"x"}}})", &r));
  EXPECT_TRUE(r.calls.empty());

  // With an id, the reply echoes it, its keys sorted and compact.
  EXPECT_EQ(handle(R"({"id":"1","method":"ping"})", "1", nullptr), R"({"id":"1","jsonrpc":"2.0","result":{}})");
  EXPECT_EQ(handle(R"({"id":-3.5,"method":"ping","params":[1]})", "1", nullptr),
            R"({"id":-3.5,"jsonrpc":"2.0","result":{}})");

  auto ok = send(R"({"id":1,"method":"tools/call","params":{"name":"stop","arguments":{"target":8080}}})", &r);
  ASSERT_EQ(r.calls.size(), 1u);
  EXPECT_EQ(r.calls[0].target, "8080");
  EXPECT_EQ(ok->at("result"), json::parse(R"({"content":[{"type":"text","text":"ran/0"}],"isError":false})"));
  // The reply keeps "/" as it is.
  const auto running = handle(R"({"id":1,"method":"tools/call","params":{"name":"list_running"}})", "1", r.runner());
  EXPECT_NE(running->find("ran/3"), std::string::npos);

  auto invalid = send(R"({"id":1,"method":"tools/call","params":{"name":"stop","arguments":{"target":""}}})", &r);
  EXPECT_EQ(invalid->at("result"),
            json::parse(R"({"content":[{"type":"text","text":"Invalid arguments for stop; see its inputSchema."}],
                            "isError":true})"));
  EXPECT_EQ(r.calls.size(), 2u);
  auto listed = send(R"({"id":1,"method":"tools/list","params":{"cursor":"x"}})")->at("result");
  EXPECT_EQ(listed.size(), 1u);
  EXPECT_EQ(listed["tools"].size(), 4u);
}

TEST(HandlerTest, TheHandshakeVersionIsNegotiatedPerRequestVersionsDecorateOrFail) {
  auto version = [](const std::string& params) {
    return send(R"({"id":1,"method":"initialize","params":)" + params + "}")->at("result")["protocolVersion"];
  };
  EXPECT_EQ(version(R"({"protocolVersion":"2024-11-05"})"), "2024-11-05");
  EXPECT_EQ(version(R"({"protocolVersion":"2026-07-28"})"), "2025-11-25");
  EXPECT_EQ(version(R"({})"), "2025-11-25");
  auto result = send(R"({"id":1,"method":"initialize"})")->at("result");
  EXPECT_EQ(result["serverInfo"], json::parse(R"({"name":"corvane","version":"1.2"})"));
  EXPECT_EQ(result["capabilities"], json::parse(R"({"tools":{}})"));
  EXPECT_FALSE(result.contains("_meta"));

  // A version asked for in one request decorates its reply, or fails it.
  auto decorated = send(
      R"({"id":1,"method":"ping","params":{"_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28"}}})");
  EXPECT_EQ(decorated->at("result"),
            json::parse(R"({"_meta":{"io.modelcontextprotocol/serverInfo":{"name":"corvane","version":"1.2"}},
                            "resultType":"complete"})"));

  auto refused = send(
      R"({"id":2,"method":"tools/list","params":{"_meta":{"io.modelcontextprotocol/protocolVersion":"9"}}})");
  EXPECT_EQ(refused->at("error"),
            json::parse(R"({"code":-32022,"message":"Unsupported protocol version","data":{"requested":"9",
              "supported":["2026-07-28","2025-11-25","2025-06-18","2025-03-26","2024-11-05"]}})"));
  EXPECT_EQ(refused->at("id"), 2);
  // Checked before the method is even looked at.
  EXPECT_EQ(send(R"({"id":2,"method":"nope","params":{"_meta":{"io.modelcontextprotocol/protocolVersion":"9"}}})")
                ->at("error")["code"],
            -32022);
  // A _meta that isn't an object asks for nothing.
  EXPECT_EQ(send(R"({"id":3,"method":"ping","params":{"_meta":[]}})")->at("result"), json::object());

  auto discover = send(R"({"id":4,"method":"server/discover"})")->at("result");
  EXPECT_EQ(discover["resultType"], "complete");
  EXPECT_EQ(discover["supportedVersions"].size(), 5u);
  EXPECT_TRUE(discover["_meta"].contains("io.modelcontextprotocol/serverInfo"));
  // Both give the agent the same instructions, and on Linux they speak of no Mac and no simulator.
  const auto instructions = result["instructions"].get<std::string>();
  EXPECT_EQ(discover["instructions"], instructions);
#ifndef __APPLE__
  for (const char* word : {"Mac", "simulator"}) EXPECT_EQ(instructions.find(word), std::string::npos) << word;
#endif

  // The lists a client may cache carry how long and for whom, but only where the caller's version has them.
  const std::string asked = R"({"_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28"}})";
  const std::pair<std::string, bool> cacheable[] = {
      {R"({"id":5,"method":"server/discover"})", true},
      {R"({"id":5,"method":"server/discover","params":)" + asked + "}", true},
      {R"({"id":5,"method":"tools/list","params":)" + asked + "}", true},
      {R"({"id":5,"method":"tools/list"})", false},
      {R"({"id":5,"method":"ping","params":)" + asked + "}", false},
  };
  for (const auto& [line, hinted] : cacheable) {
    const json reply = *send(line);
    const json answer = reply.value("result", json::object());
    EXPECT_EQ(answer.value("ttlMs", -1), hinted ? 3'600'000 : -1) << line;
    EXPECT_EQ(answer.value("cacheScope", ""), hinted ? "public" : "") << line;
  }
}

// Through the handler a whole number is the target's text and an empty one is refused; here, the rest.
TEST(ToolsTest, ParseArguments) {
  auto args = [](const char* text) { return json::parse(text); };
  const std::pair<const char*, const char*> refused[] = {
      {"stop", R"({"target":3.5})"}, {"stop", R"({"target":true})"}, {"stop", "{}"},
      {"free_memory", R"({"gb":0})"}, {"free_memory", R"({"gb":1024})"}, {"free_memory", R"({"gb":"2"})"},
      {"find_free_port", R"({"start":0})"}, {"find_free_port", R"({"start":65536})"},
      {"find_free_port", R"({"start":"3000"})"}};
  for (const auto& [tool, text] : refused) EXPECT_FALSE(parse(tool, args(text))) << tool << " " << text;

  EXPECT_EQ(parse("stop", args(R"({"target":"8080","extra":1})"))->target, "8080");
  EXPECT_DOUBLE_EQ(parse("free_memory", args(R"({"gb":1023.9})"))->gb, 1023.9);
  for (const char* forReal : {R"({"gb":2,"dry_run":"yes"})", R"({"gb":2,"dry_run":false})", R"({"gb":2})"})
    EXPECT_FALSE(parse("free_memory", args(forReal))->dryRun) << forReal;
  EXPECT_TRUE(parse("free_memory", args(R"({"gb":2,"dry_run":true})"))->dryRun);

  EXPECT_EQ(parse("find_free_port", args("{}"))->start, 3000);
  EXPECT_EQ(parse("find_free_port", args(R"({"start":65535})"))->start, 65535);
  EXPECT_EQ(parse("list_running", args(R"({"anything":[1]})"))->kind, Call::Kind::listRunning);
}

}  // namespace
}  // namespace corvane::MCP
