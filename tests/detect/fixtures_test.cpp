// Whole machines: every row a realistic snapshot yields and what each row owns.
#include <algorithm>
#include <set>
#include <tuple>

#include <gmock/gmock.h>

#include "detect/agents.h"
#include "detect/pipeline.h"
#include "detect/world_fixture.h"

namespace corvane {
namespace {

using ::testing::UnorderedElementsAreArray;
using testing::findItem;
using testing::loadWorld;

using Pids = std::vector<int32_t>;
using Ports = std::vector<uint16_t>;
using Name = std::optional<std::string>;

struct Row {
  std::string id, key, title;
  Pids pids;  // the root first, the rest in any order
  uint64_t memory;
  Ports ports;
  Name startedBy = std::nullopt;
  std::optional<int32_t> agentPID = std::nullopt;
  bool guarded = false;
};

// No process in two rows, and none of an agent's in a row that is not an agent's: stopping a server
// must never stop the agent that started it.
void expectEachProcessInOneRow(const World& world, const std::vector<Item>& items) {
  std::set<int32_t> owned;
  for (const auto& item : items) {
    for (const int32_t pid : item.pids) {
      EXPECT_TRUE(owned.insert(pid).second) << pid << " owned twice";
      const auto p = std::find_if(world.snapshot.procs.begin(), world.snapshot.procs.end(),
                                  [&](const Proc& proc) { return proc.pid == pid; });
      if (p != world.snapshot.procs.end() && agentDisplayName(*p)) {
        EXPECT_EQ(item.kind, Item::Kind::agent) << item.id << " owns the agent " << pid;
      }
    }
  }
}

void expectRows(const World& world, const std::vector<Item>& items, const std::vector<Row>& rows) {
  expectEachProcessInOneRow(world, items);
  EXPECT_EQ(items.size(), rows.size());
  for (size_t i = 0; i < std::min(items.size(), rows.size()); ++i) {
    const Item* item = &items[i];
    const Row& row = rows[i];
    SCOPED_TRACE(row.id);
    EXPECT_EQ(item->id, row.id);
    EXPECT_EQ(item->key, row.key);
    EXPECT_EQ(item->title, row.title);
    EXPECT_THAT(item->pids, UnorderedElementsAreArray(row.pids));
    if (!row.pids.empty() && !item->pids.empty()) {
      EXPECT_EQ(item->pids.front(), row.pids.front());
    }
    EXPECT_EQ(item->memory, row.memory);
    EXPECT_EQ(item->ports, row.ports);
    EXPECT_EQ(item->startedBy, row.startedBy);
    EXPECT_EQ(item->agentPID, row.agentPID);
    EXPECT_EQ(item->guarded, row.guarded);
    EXPECT_EQ(item->counted, item->kind != Item::Kind::container);
  }
}

const std::string phone = "8C1F4A2E-5B3D-4E6F-9A7B-1C2D3E4F5A6B";
const std::string pad = "D4E5F6A7-B8C9-4DAE-8F01-23456789ABCD";
const std::string preview = "3F2E1D0C-BA98-4765-8432-10FEDCBA9876";

TEST(MacLaptopTest, Rows) {
  World world = loadWorld("macos_laptop.json");
  const auto items = detect(world);
  expectRows(world, items, {
      {"sim:" + phone, "sim:" + phone, "iPhone 16 Pro", {600, 601, 602, 603}, 400'000'000, {8100}},
      {"sim:" + pad, "sim:" + pad, "iPad Air 13-inch (M2)", {610, 611}, 260'000'000, {}},
      {"sim:" + preview, "sim:" + preview, "Xcode Previews · iPhone 16", {620, 621}, 160'000'000, {}},
      {"simapp:630", "simulator-app", "Simulator app", {630}, 120'000'000, {}},
      {"avd:711", "avd:Pixel_8_API_35", "Pixel 8 API 35", {711, 712}, 3'005'000'000, {5554, 5555, 8554},
       "Android Studio"},
      // The backend publishes the containers' ports; an engine's title never shows one.
      {"docker:Docker Desktop", "docker:Docker Desktop", "Docker Desktop", {801, 802, 803, 804, 810},
       4'380'000'000, {5433, 6379, 8080}},
      {"container:4f3c2b1a0e9d", "container:shop-db-1", "shop-db-1", {}, 61'000'000, {}, {}, {}, true},
      {"container:7a6b5c4d3e2f", "container:shop-redis-1", "shop-redis-1", {}, 9'000'000, {}, {}, {}, true},
      {"container:1e2d3c4b5a69", "container:shop-web-1", "shop-web-1", {}, 12'000'000, {}},
      {"container:9f8e7d6c5b4a", "container:buildx_buildkit_default", "buildx_buildkit_default", {}, 30'000'000, {}},
      // The Kotlin daemon runs under the Gradle daemon's JVM, which lives in Android Studio's bundle.
      {"kotlin:730", "kotlin", "Kotlin daemon", {730}, 900'000'000, {17031}, "Android Studio"},
      {"gradle:720", "gradle 8.7", "Gradle daemon 8.7", {720}, 1'800'000'000, {52011}},
      {"xcode:510", "xcode:SourceKitService", "SourceKitService", {510}, 800'000'000, {}, {}, {}, true},
      {"xcode:511", "xcode:XCBBuildService", "XCBBuildService", {511}, 300'000'000, {}, {}, {}, true},
      {"bundler:1001", "bundler:/Users/ann/mobile:Metro", "Metro :8081", {1001, 1002, 1003}, 301'000'000, {8081}},
      {"db:1100", "db:postgres", "PostgreSQL :5432", {1100, 1101, 1102, 1103, 1104}, 40'000'000, {5432}, {}, {},
       true},
      {"tunnel:1200", "tunnel:kubectl port-forward svc/api 9090:80 -n dev", "kubectl port-forward svc/api 9090:80",
       {1200}, 45'000'000, {9090}},
      // ngrok listens in a project folder: a tunnel, not a dev server.
      {"tunnel:1210", "tunnel:ngrok http 3000", "ngrok", {1210}, 35'000'000, {4040}},
      // npm run dev from an interactive zsh: the row starts at npm.
      {"server:903", "server:/Users/ann/shop:Next.js", "Next.js :3000", {903, 904, 905, 906, 907}, 811'000'000,
       {3000}},
      // Started by Claude Code through its zsh -c: the climb stops below the agent.
      {"server:952", "server:/Users/ann/blog:Vite", "Vite :5173", {952, 953, 954, 955, 956}, 254'000'000,
       {5173, 24678}, "Claude Code", 951},
      {"server:1311", "server:/Users/ann/api:Django", "Django :8000", {1311, 1312}, 110'000'000, {8000}, "VS Code"},
      {"agent:951", "agent:/Users/ann/blog", "Claude Code", {951, 957}, 460'000'000, {}, {}, {}, true},
  });

  const Item& next = *findItem(items, "server:903");
  EXPECT_EQ(next.cwd, "/Users/ann/shop");
  EXPECT_EQ(next.inbound, 2);
  EXPECT_EQ(next.started, world.snapshot.procs[24].started);  // npm's
  EXPECT_EQ(next.stop, Stop::signal());
  EXPECT_EQ(findItem(items, "sim:" + preview)->stop, Stop::simulator(preview, true));
  EXPECT_EQ(findItem(items, "avd:711")->stop, Stop::emulator("emulator-5554"));
  EXPECT_EQ(findItem(items, "container:4f3c2b1a0e9d")->stop, Stop::containers({"4f3c2b1a0e9d"}));
  EXPECT_EQ(findItem(items, "container:4f3c2b1a0e9d")->project, "shop");
  EXPECT_FALSE(findItem(items, "container:9f8e7d6c5b4a")->project);
  EXPECT_FALSE(findItem(items, "docker:Docker Desktop")->stop);
  EXPECT_FALSE(findItem(items, "db:1100")->cwd);

  // Xcode's services are guarded only while Xcode runs; database images match in any case.
  std::erase_if(world.snapshot.procs, [](const Proc& p) { return p.name == "Xcode"; });
  world.containers[0].image = "ghcr.io/supabase/Postgres:15";
  world.containers[1].image = "REDIS:7.2";
  const auto quit = detect(world);
  EXPECT_FALSE(findItem(quit, "xcode:510")->guarded);
  EXPECT_FALSE(findItem(quit, "xcode:511")->guarded);
  EXPECT_TRUE(findItem(quit, "container:4f3c2b1a0e9d")->guarded);
  EXPECT_TRUE(findItem(quit, "container:7a6b5c4d3e2f")->guarded);
}

TEST(LinuxWorkstationTest, Rows) {
  const World world = loadWorld("linux_workstation.json");
  expectRows(world, detect(world), {
      // Started from a GNOME Terminal window, like the server and the agent below.
      {"avd:1201", "avd:Pixel_7_API_34", "Pixel 7 API 34", {1201}, 2'600'000'000, {5554, 5555}, "GNOME Terminal"},
      {"docker:Docker Engine", "docker:Docker Engine", "Docker Engine", {1120, 1121}, 120'000'000, {}},
      {"gradle:1300", "gradle 8.10.2", "Gradle daemon 8.10.2", {1300}, 1'200'000'000, {38411}},
      {"server:1401", "server:/home/dev/webapp:Node", "Node :8080", {1401, 1402}, 130'000'000, {8080},
       "GNOME Terminal"},
      // Codex runs commands with "bash -lc", which is not "-c": the climb stops at the server.
      {"server:1506", "server:/home/dev/api:Python", "Python :8000", {1506}, 20'000'000, {8000}, "Codex", 1501},
      {"agent:1501", "agent:/home/dev/api", "Codex", {1501, 1503, 1504, 1505}, 248'000'000, {}, "GNOME Terminal", {},
       true},
  });
}

// The agents people install, in the shapes their npm packages run on each system: one row a session
// however often it relaunches itself, and a server an agent started owns none of the agent.
TEST(AgentShapesTest, Rows) {
  using Case = std::tuple<std::string, int32_t, std::string>;
  for (const auto& [fixture, base, home] : {Case{"macos_agents.json", 3000, "/Users/ann"},
                                            Case{"linux_agents.json", 4000, "/home/dev"}}) {
    SCOPED_TRACE(fixture);
    const World world = loadWorld(fixture);
    const bool mac = base == 3000;
    const auto at = [&](int32_t offset) { return base + offset; };
    const auto agent = [&](int32_t offset, const std::string& folder, const std::string& title, Pids pids,
                           uint64_t memory, std::optional<int32_t> agentPID = std::nullopt) {
      return Row{"agent:" + std::to_string(at(offset)), "agent:" + home + folder, title, pids, memory, {}, {},
                 agentPID, true};
    };
    expectRows(world, detect(world), {
        {"server:" + std::to_string(at(3)), "server:" + home + "/web:Vite", "Vite :5173", {at(3), at(4), at(5), at(6)},
         174'000'000, {5173}, "Gemini CLI", at(1)},
        {"server:" + std::to_string(at(12)), "server:" + home + "/api:Next.js", "Next.js :3000", {at(12), at(13)},
         204'000'000, {3000}, "Claude Code", at(11)},
        agent(1, "/web", "Gemini CLI", {at(1), at(2)}, 360'000'000),
        agent(11, "/api", "Claude Code", {at(11)}, 400'000'000),
        // The session, and the daemon that outlives it. While the session runs, the daemon's helper is
        // the session's child, not the daemon's.
        mac ? agent(21, "/tools", "Codex", {at(21), at(22)}, 130'000'000)
            : agent(21, "/tools", "Codex", {at(21), at(22), at(26)}, 160'000'000),
        mac ? agent(25, "/tools", "Codex", {at(25), at(26)}, 100'000'000)
            : agent(25, "/tools", "Codex", {at(25)}, 70'000'000, at(21)),
        agent(31, "/notes", "opencode", {at(31)}, 150'000'000),
        agent(41, "/shop", "Copilot CLI", {at(41), at(42)}, 225'000'000),
        agent(51, "/docs", "Qwen Code", {at(51), at(52)}, 305'000'000),
    });
  }
}

TEST(BrokenTreeTest, CyclesMissingParentsAndBlankFieldsStillGiveRows) {
  const World world = loadWorld("broken_tree.json");
  const auto items = detect(world);
  const auto ring = std::find_if(items.begin(), items.end(),
                                 [](const Item& item) { return item.key == "server:/home/dev/ring:Node"; });
  ASSERT_NE(ring, items.end());
  EXPECT_THAT(ring->pids, ::testing::UnorderedElementsAre(2060, 2061, 2062));
  EXPECT_EQ(findItem(items, "server:2051")->startedBy, "Claude Code");  // agent and server parent each other
  EXPECT_EQ(findItem(items, "tunnel:2072")->title, "kubectl port-forward");
  EXPECT_EQ(findItem(items, "gradle:2073")->title, "Gradle daemon");  // the class name is the last argument
  EXPECT_EQ(findItem(items, "gradle:2073")->key, "gradle");
  EXPECT_EQ(findItem(items, "bundler:2076")->title, "flutter run");
  // Two agents of one name that parent each other are a row each.
  for (const char* id : {"db:2030", "server:2011", "server:2020", "agent:2050", "agent:2080", "agent:2081"})
    EXPECT_TRUE(findItem(items, id)) << id;
  // No UUID, "-avd" last, a VM responsible for itself, a blank listener without a folder: no rows.
  for (const auto& item : items) {
    EXPECT_NE(item.kind, Item::Kind::simulator);
    EXPECT_NE(item.kind, Item::Kind::emulator);
    EXPECT_NE(item.kind, Item::Kind::docker);
    EXPECT_NE(item.id, "server:2040");
  }
  expectEachProcessInOneRow(world, items);
}

}  // namespace
}  // namespace corvane
