#include <gtest/gtest.h>

#include "scanner/containers.h"
#include "tools/tools.h"
#include "support/fake_engine.h"
#include "support/fake_programs.h"

namespace corvane {
namespace {

using testing_support::FakeEngine;
using testing_support::ScopedEnv;
using testing_support::writeScript;

TEST(ContainersTest, MemorySizesJSONLinesAndLabels) {
  for (const auto& [text, bytes] : std::initializer_list<std::pair<const char*, uint64_t>>{
           {"1.5GiB", 1610612736}, {"512MiB", 536870912}, {"12.3kB", 12300}, {" \t1.5GiB \t", 1610612736},
           {"--", 0}, {"GiB", 0}, {"1.5 GiB", 0}, {"-3MiB", 0}, {"nanGiB", 0}, {"1e10TB", UINT64_MAX}})
    EXPECT_EQ(parseMemorySize(text), bytes) << text;

  const auto objects = parseJSONLines("{\"a\":1}\n\n[1]\nnot json\n{\"b\":\"x\xff\xE2\x9Cy\"}\n\"s\"\n{\"c\":2}");
  ASSERT_EQ(objects.size(), 3u);
  EXPECT_EQ(objects[0]["a"], 1);
  EXPECT_EQ(objects[1]["b"], "x\xEF\xBF\xBD\xEF\xBF\xBDy");  // a cut-off sequence is one replacement
  EXPECT_EQ(objects[2]["c"], 2);

  EXPECT_EQ(composeProject("com.docker.compose.project=shop,com.docker.compose.service=web"), "shop");
  EXPECT_EQ(composeProject(",,com.docker.compose.service=web,com.docker.compose.project=a=b"), "a=b");
  EXPECT_EQ(composeProject("com.docker.compose.project,com.docker.compose.project=shop"), std::nullopt);
  EXPECT_EQ(composeProject("com.docker.compose.project.config_files=x"), std::nullopt);
}

TEST(ContainersTest, PsAndStatsLinesJoinedByID) {
  const std::string ps =
      R"({"ID":"c1","Names":"shop-web-1,alias","Image":"nginx","Labels":"com.docker.compose.project=shop"})" "\n"
      R"({"ID":"c2","Names":"db","Labels":7})" "\n"
      R"({"ID":"c3"})" "\n"
      R"({"ID":"c4","Names":"idle"})" "\n";
  const std::string stats =
      R"({"ID":"c1","MemUsage":"1KiB / 2GiB"})" "\n"
      R"({"ID":"c1","MemUsage":"1.5GiB / 7.7GiB"})" "\n"
      R"({"ID":"c2","MemUsage":"--"})" "\n"
      R"({"ID":"c4"})" "\n";
  const auto containers = containersFromDockerOutput(ps, stats);
  EXPECT_EQ(containers, (std::vector<Container>{{"c1", "shop-web-1,alias", "nginx", "shop", 1610612736},
                                                 {"c2", "db", "", std::nullopt, 0},
                                                 {"c4", "idle", "", std::nullopt, 0}}));
}

// A fake docker whose `ps` and `stats` behave as the test says.
std::string fakeDocker(const std::string& ps, const std::string& stats) {
  const std::string dir = testing_support::makeTempDir("docker");
  return writeScript(dir + "/docker", "case \"$1 $2 $3 $4 $5\" in\n"
                                      "\"ps --no-trunc --format {{json .}} \") " + ps + " ;;\n"
                                      "\"stats --no-stream --no-trunc --format {{json .}}\") " + stats + " ;;\n"
                                      "*) exit 64 ;;\nesac\n");
}

constexpr const char* psLine = R"(echo '{"ID":"c1","Names":"web","Image":"nginx"}')";
constexpr DockerTimeouts quick{0.5, 0.5};

TEST(ContainersTest, FetchThroughDocker) {
  EXPECT_EQ(fetchContainers(fakeDocker(psLine, R"(echo '{"ID":"c1","MemUsage":"512MiB / 1GiB"}')"), quick),
            (std::vector<Container>{{"c1", "web", "nginx", std::nullopt, 536870912}}));
  // A failing stats run still gives the containers, without memory.
  EXPECT_EQ(fetchContainers(fakeDocker(psLine, "echo 'Error response from daemon'; exit 1"), quick),
            (std::vector<Container>{{"c1", "web", "nginx", std::nullopt, 0}}));
  EXPECT_TRUE(fetchContainers(fakeDocker(psLine, "exec sleep 5"), quick).empty());
  EXPECT_TRUE(fetchContainers(fakeDocker(std::string(psLine) + "; exit 1", "exit 0"), quick).empty());
  EXPECT_TRUE(fetchContainers(fakeDocker("exec sleep 5", "exit 0"), quick).empty());
  EXPECT_TRUE(runningContainers(Tools{}).empty());
}

// The engine's API gives the rows the docker runs give; an engine that fails gives none, and only a
// socket where nobody answers leaves the containers to docker.
TEST(ContainersTest, FetchThroughTheEngineAPI) {
  if (testing_support::systemPython().empty()) GTEST_SKIP() << "no Python 3";
  const std::vector<Container> three = {
      {std::string(64, 'a'), "shop-web-1", "nginx:1.27", "shop", 100 * 1048576},
      {std::string(64, 'b'), "db,web/db", "postgres:16", std::nullopt, 1536 * 1048576},
      {std::string(64, 'c'), "cache", "<no image>", std::nullopt, 123417395}};
  std::vector<Container> withoutMemory = three;
  for (auto& container : withoutMemory) container.memory = 0;
  const std::vector<Container> fromDocker = {{"c1", "web", "nginx", std::nullopt, 536870912}};
  const Tools tools{{{"docker", fakeDocker(psLine, R"(echo '{"ID":"c1","MemUsage":"512MiB / 1GiB"}')")}}};
  const struct {
    const char* mode;
    std::vector<Container> containers;
  } cases[] = {{"three", three},        {"stats-error", withoutMemory}, {"slow-stats", {}}, {"slow", {}},
               {"error", {}},           {"garbage", {}},                {"dead", fromDocker}};
  for (const auto& c : cases) {
    const FakeEngine engine(c.mode);
    ASSERT_TRUE(engine.ready) << c.mode;
    const ScopedEnv host("DOCKER_HOST", engine.host());
    EXPECT_EQ(c.mode == std::string("dead") ? runningContainers(tools) : *fetchEngineContainers(engine.socket, quick),
              c.containers)
        << c.mode;
  }
  EXPECT_EQ(fetchEngineContainers(testing_support::makeTempDir("none") + "/engine.sock", quick), std::nullopt);
  // DOCKER_HOST names the engine; one reached over TCP is left to docker.
  const FakeEngine engine("three");
  const ScopedEnv host("DOCKER_HOST", "tcp://127.0.0.1:2375");
  const ScopedEnv runtime("XDG_RUNTIME_DIR", std::filesystem::path(engine.socket).parent_path().string());
  std::filesystem::rename(engine.socket, std::filesystem::path(engine.socket).parent_path() / "docker.sock");
  EXPECT_EQ(runningContainers(tools), fromDocker);
  const ScopedEnv unset("DOCKER_HOST", std::nullopt);
  EXPECT_EQ(runningContainers(tools), three);
}

}  // namespace
}  // namespace corvane
