// Whole machines: every row a realistic snapshot yields, and what each row owns.
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "detect/pipeline.h"
#include "detect/world_fixture.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;
using testing::findItem;
using testing::idsOf;
using testing::loadWorld;

constexpr const char* phone = "sim:8C1F4A2E-5B3D-4E6F-9A7B-1C2D3E4F5A6B";
constexpr const char* pad = "sim:D4E5F6A7-B8C9-4DAE-8F01-23456789ABCD";
constexpr const char* previews = "sim:3F2E1D0C-BA98-4765-8432-10FEDCBA9876";

// A pid belongs to one row at most, whatever the snapshot looks like.
void expectEachPidOnce(const std::vector<Item>& items) {
  std::set<int32_t> seen;
  for (const auto& item : items)
    for (const int32_t pid : item.pids) EXPECT_TRUE(seen.insert(pid).second) << pid << " in " << item.id;
}

class MacLaptopTest : public ::testing::Test {
 protected:
  World world = loadWorld("macos_laptop.json");
  std::vector<Item> items = detect(world);

  const Item& row(const std::string& id) {
    const Item* item = findItem(items, id);
    if (!item) ADD_FAILURE() << "no row " << id;
    static const Item none;
    return item ? *item : none;
  }
};

TEST_F(MacLaptopTest, RowsComeInPipelineOrder) {
  EXPECT_THAT(idsOf(items),
              ElementsAre(phone, pad, previews, "simapp:630", "avd:711", "docker:Docker Desktop",
                          "container:4f3c2b1a0e9d", "container:7a6b5c4d3e2f", "container:1e2d3c4b5a69",
                          "container:9f8e7d6c5b4a", "kotlin:730", "gradle:720", "xcode:510", "xcode:511",
                          "bundler:1001", "db:1100", "tunnel:1200", "tunnel:1210", "server:903", "server:952",
                          "server:1311", "agent:951"));
  expectEachPidOnce(items);
}

TEST_F(MacLaptopTest, SimulatorsOwnEverythingInsideTheDevice) {
  const Item& sim = row(phone);
  EXPECT_EQ(sim.title, "iPhone 16 Pro");
  EXPECT_EQ(sim.key, sim.id);
  EXPECT_THAT(sim.pids, UnorderedElementsAre(600, 601, 602, 603));
  EXPECT_EQ(sim.pids.front(), 600);
  EXPECT_EQ(sim.memory, 400'000'000u);
  EXPECT_EQ(sim.stop, Stop::simulator("8C1F4A2E-5B3D-4E6F-9A7B-1C2D3E4F5A6B", false));
  EXPECT_FALSE(sim.cwd);
  // The app inside the device listens with a working directory, yet it is the device's.
  EXPECT_THAT(sim.ports, ElementsAre(8100));
  EXPECT_EQ(row(pad).title, "iPad Air 13-inch (M2)");
  EXPECT_EQ(row(previews).title, "Xcode Previews · iPhone 16");
  EXPECT_EQ(row(previews).stop, Stop::simulator("3F2E1D0C-BA98-4765-8432-10FEDCBA9876", true));

  const Item& app = row("simapp:630");
  EXPECT_EQ(app.key, "simulator-app");
  EXPECT_EQ(app.title, "Simulator app");
  EXPECT_EQ(app.stop, Stop::signal());
}

TEST_F(MacLaptopTest, EmulatorAndDaemons) {
  const Item& avd = row("avd:711");
  EXPECT_EQ(avd.key, "avd:Pixel_8_API_35");
  EXPECT_EQ(avd.title, "Pixel 8 API 35");
  EXPECT_EQ(avd.stop, Stop::emulator("emulator-5554"));
  EXPECT_THAT(avd.pids, ElementsAre(711, 712));
  EXPECT_EQ(avd.memory, 3'005'000'000u);
  EXPECT_EQ(avd.startedBy, "Android Studio");
  EXPECT_FALSE(avd.agentPID);

  // The Kotlin daemon runs under the Gradle daemon and still gets its own row.
  EXPECT_THAT(row("kotlin:730").pids, ElementsAre(730));
  EXPECT_EQ(row("kotlin:730").key, "kotlin");
  const Item& gradle = row("gradle:720");
  EXPECT_EQ(gradle.key, "gradle 8.7");
  EXPECT_EQ(gradle.title, "Gradle daemon 8.7");
  EXPECT_THAT(gradle.pids, ElementsAre(720));
  EXPECT_EQ(gradle.inbound, 1);
  EXPECT_FALSE(gradle.cwd);

  EXPECT_EQ(row("xcode:510").key, "xcode:SourceKitService");
  EXPECT_TRUE(row("xcode:510").guarded);
  EXPECT_TRUE(row("xcode:511").guarded);
}

TEST_F(MacLaptopTest, XcodeServicesAreUnguardedOnceXcodeQuits) {
  std::erase_if(world.snapshot.procs, [](const Proc& p) { return p.name == "Xcode"; });
  const auto after = detect(world);
  EXPECT_FALSE(findItem(after, "xcode:510")->guarded);
  EXPECT_FALSE(findItem(after, "xcode:511")->guarded);
}

TEST_F(MacLaptopTest, DockerDesktopOwnsItsVirtualMachine) {
  const Item& docker = row("docker:Docker Desktop");
  EXPECT_EQ(docker.key, "docker:Docker Desktop");
  EXPECT_EQ(docker.title, "Docker Desktop");  // no port suffix though the backend listens
  EXPECT_THAT(docker.pids, UnorderedElementsAre(801, 802, 803, 804, 810));
  EXPECT_EQ(docker.pids.front(), 801);
  EXPECT_EQ(docker.memory, 4'380'000'000u);
  EXPECT_THAT(docker.ports, ElementsAre(5433, 6379, 8080));
  EXPECT_FALSE(docker.stop);
  EXPECT_TRUE(docker.counted);

  const Item& db = row("container:4f3c2b1a0e9d");
  EXPECT_EQ(db.key, "container:shop-db-1");
  EXPECT_EQ(db.project, "shop");
  EXPECT_TRUE(db.guarded);
  EXPECT_FALSE(db.counted);
  EXPECT_TRUE(db.pids.empty());
  EXPECT_EQ(db.memory, 61'000'000u);
  EXPECT_EQ(db.stop, Stop::containers({"4f3c2b1a0e9d"}));
  EXPECT_TRUE(row("container:7a6b5c4d3e2f").guarded);
  EXPECT_FALSE(row("container:1e2d3c4b5a69").guarded);
  EXPECT_FALSE(row("container:9f8e7d6c5b4a").project);
}

TEST_F(MacLaptopTest, ProjectRows) {
  const Item& metro = row("bundler:1001");
  EXPECT_EQ(metro.key, "bundler:/Users/ann/mobile:Metro");
  EXPECT_EQ(metro.title, "Metro :8081");
  EXPECT_THAT(metro.pids, ElementsAre(1001, 1002, 1003));
  EXPECT_EQ(metro.cwd, "/Users/ann/mobile");

  const Item& postgres = row("db:1100");
  EXPECT_EQ(postgres.key, "db:postgres");
  EXPECT_EQ(postgres.title, "PostgreSQL :5432");
  EXPECT_THAT(postgres.pids, UnorderedElementsAre(1100, 1101, 1102, 1103, 1104));
  EXPECT_EQ(postgres.memory, 40'000'000u);
  EXPECT_TRUE(postgres.guarded);
  EXPECT_FALSE(postgres.cwd);

  const Item& forward = row("tunnel:1200");
  EXPECT_EQ(forward.title, "kubectl port-forward svc/api 9090:80");
  EXPECT_EQ(forward.key, "tunnel:kubectl port-forward svc/api 9090:80 -n dev");
  EXPECT_EQ(forward.cwd, "/Users/ann/infra");
  // ngrok listens in a project folder: a tunnel, not a dev server, and without a port in its title.
  EXPECT_EQ(row("tunnel:1210").title, "ngrok");
  EXPECT_EQ(row("tunnel:1210").key, "tunnel:ngrok http 3000");

  const Item& next = row("server:903");
  EXPECT_EQ(next.title, "Next.js :3000");
  EXPECT_EQ(next.key, "server:/Users/ann/shop:Next.js");
  EXPECT_THAT(next.pids, ElementsAre(903, 904, 905, 906, 907));
  EXPECT_EQ(next.memory, 811'000'000u);
  EXPECT_EQ(next.inbound, 2);
  EXPECT_FALSE(next.startedBy);
  EXPECT_EQ(next.started, world.snapshot.procs[24].started);  // npm's, the root's

  const Item& django = row("server:1311");
  EXPECT_EQ(django.title, "Django :8000");
  EXPECT_THAT(django.pids, ElementsAre(1311, 1312));
  EXPECT_EQ(django.startedBy, "VS Code");
  EXPECT_FALSE(django.agentPID);
}

TEST_F(MacLaptopTest, ServerStartedByAnAgentIsARowOfItsOwn) {
  const Item& vite = row("server:952");
  EXPECT_EQ(vite.title, "Vite :5173");
  EXPECT_THAT(vite.ports, ElementsAre(5173, 24678));
  EXPECT_THAT(vite.pids, ElementsAre(952, 953, 954, 955, 956));
  EXPECT_EQ(vite.startedBy, "Claude Code");
  EXPECT_EQ(vite.agentPID, 951);

  const Item& agent = row("agent:951");
  EXPECT_EQ(agent.key, "agent:/Users/ann/blog");
  EXPECT_EQ(agent.title, "Claude Code");
  EXPECT_THAT(agent.pids, ElementsAre(951, 957));
  EXPECT_EQ(agent.memory, 460'000'000u);
  EXPECT_TRUE(agent.guarded);
  EXPECT_EQ(agent.stop, Stop::signal());
  EXPECT_EQ(agent.cwd, "/Users/ann/blog");
}

TEST(LinuxWorkstationTest, Rows) {
  const auto items = detect(loadWorld("linux_workstation.json"));
  EXPECT_THAT(idsOf(items), ElementsAre("avd:1201", "docker:Docker Engine", "gradle:1300", "server:1401",
                                        "server:1506", "agent:1501"));
  expectEachPidOnce(items);

  const Item& avd = *findItem(items, "avd:1201");
  EXPECT_EQ(avd.title, "Pixel 7 API 34");
  EXPECT_EQ(avd.stop, Stop::emulator("emulator-5554"));
  EXPECT_FALSE(avd.startedBy);

  const Item& engine = *findItem(items, "docker:Docker Engine");
  EXPECT_THAT(engine.pids, ElementsAre(1120, 1121));
  EXPECT_EQ(engine.memory, 120'000'000u);

  EXPECT_EQ(findItem(items, "gradle:1300")->title, "Gradle daemon 8.10.2");

  const Item& node = *findItem(items, "server:1401");
  EXPECT_EQ(node.title, "Node :8080");
  EXPECT_EQ(node.key, "server:/home/dev/webapp:Node");
  EXPECT_THAT(node.pids, ElementsAre(1401, 1402));
  EXPECT_EQ(node.inbound, 3);

  // Codex runs commands through "bash -lc", which is not "-c": the climb stops at the server.
  const Item& python = *findItem(items, "server:1506");
  EXPECT_EQ(python.title, "Python :8000");
  EXPECT_THAT(python.pids, ElementsAre(1506));
  EXPECT_EQ(python.startedBy, "Codex");
  EXPECT_EQ(python.agentPID, 1501);

  const Item& codex = *findItem(items, "agent:1501");
  EXPECT_EQ(codex.key, "agent:/home/dev/api");
  EXPECT_THAT(codex.pids, UnorderedElementsAre(1501, 1503, 1504, 1505));
}

TEST(BrokenTreeTest, CyclesMissingParentsAndEmptyFieldsEndInRows) {
  const auto items = detect(loadWorld("broken_tree.json"));
  expectEachPidOnce(items);

  const auto ids = idsOf(items);
  EXPECT_THAT(ids, ::testing::Contains("db:2030"));           // parent missing
  EXPECT_THAT(ids, ::testing::Contains("server:2011"));       // under a self-parented blank process
  EXPECT_THAT(ids, ::testing::Contains("server:2020"));       // its own parent
  EXPECT_THAT(ids, ::testing::Contains("gradle:2073"));
  EXPECT_EQ(findItem(items, "gradle:2073")->title, "Gradle daemon");
  EXPECT_EQ(findItem(items, "tunnel:2072")->title, "kubectl port-forward");
  EXPECT_EQ(findItem(items, "bundler:2076")->title, "flutter run");

  // The agent and the server form a ppid loop; each still gets its row.
  EXPECT_EQ(findItem(items, "server:2051")->startedBy, "Claude Code");
  EXPECT_THAT(findItem(items, "agent:2050")->pids, ElementsAre(2050));

  // A three-process loop is one server row owning the whole loop.
  const auto ring = std::find_if(items.begin(), items.end(), [](const Item& item) {
    return item.key == "server:/home/dev/ring:Node";
  });
  ASSERT_NE(ring, items.end());
  EXPECT_THAT(ring->pids, UnorderedElementsAre(2060, 2061, 2062));

  // No launchd_sim UUID, "-avd" last, an engine VM responsible for itself, a blank listener: no rows.
  for (const auto& item : items) {
    EXPECT_NE(item.kind, Item::Kind::simulator);
    EXPECT_NE(item.kind, Item::Kind::emulator);
    EXPECT_NE(item.kind, Item::Kind::docker);
    EXPECT_NE(item.id, "server:2040");
  }
}

}  // namespace
}  // namespace corvane
