// Docker engines and containers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "detect/pipeline.h"
#include "detect/world_fixture.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::idsOf;
using testing::makeProc;
using testing::worldOf;

const std::string vm =
    "/System/Library/Frameworks/Virtualization.framework/Versions/A/XPCServices/"
    "com.apple.Virtualization.VirtualMachine.xpc/Contents/MacOS/com.apple.Virtualization.VirtualMachine";

Proc withMemory(Proc p, uint64_t footprint) {
  p.footprint = footprint;
  return p;
}

TEST(DockerEngineTest, VirtualMachineJoinsTheEngineResponsibleForIt) {
  auto backend = withMemory(makeProc(10, 1, "/Applications/Docker.app/Contents/MacOS/com.docker.backend"), 100);
  auto machine = withMemory(makeProc(20, 1, vm), 4000);
  machine.responsible = 10;
  auto orphan = withMemory(makeProc(21, 1, vm), 1000);  // a VM nobody is responsible for
  auto other = withMemory(makeProc(22, 1, vm), 500);    // a VM of an app that is no engine
  other.responsible = 30;
  auto utm = makeProc(30, 1, "/Applications/UTM.app/Contents/MacOS/UTM");
  const auto items = detect(worldOf({backend, machine, orphan, other, utm}));
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0].id, "docker:Docker Desktop");
  EXPECT_THAT(items[0].pids, ElementsAre(10, 20));
  EXPECT_EQ(items[0].memory, 4100u);
}

TEST(DockerEngineTest, EnginesInOrderOfName) {
  const auto items = detect(worldOf({
      makeProc(10, 1, "/Applications/OrbStack.app/Contents/MacOS/OrbStack"),
      makeProc(11, 1, "/opt/homebrew/bin/limactl", {"limactl", "hostagent"}),
      makeProc(12, 1, "/usr/bin/dockerd", {"dockerd"}),
      makeProc(13, 1, "/opt/docker-desktop/bin/com.docker.backend"),
      makeProc(14, 1, "/opt/homebrew/bin/colima", {"colima", "start"}),
  }));
  EXPECT_THAT(idsOf(items), ElementsAre("docker:Colima", "docker:Docker Desktop", "docker:Docker Engine",
                                        "docker:OrbStack"));
  EXPECT_THAT(items[0].pids, ElementsAre(11, 14));
  EXPECT_EQ(items[2].title, "Docker Engine");
}

TEST(DockerEngineTest, EngineWhoseProcessesWereClaimedStillHasARow) {
  // An emulator's tree took the engine's only process.
  auto emulator = makeProc(10, 1, "/sdk/qemu-system-aarch64", {"qemu-system-aarch64", "-avd", "Pixel"});
  auto helper = withMemory(makeProc(11, 10, "/Applications/OrbStack.app/Contents/MacOS/helper"), 50);
  const auto items = detect(worldOf({emulator, helper}));
  EXPECT_THAT(idsOf(items), ElementsAre("avd:10", "docker:OrbStack"));
  EXPECT_THAT(items[1].pids, IsEmpty());
  EXPECT_EQ(items[1].memory, 0u);
  EXPECT_FALSE(items[1].started);
}

TEST(ContainerTest, DatabaseImagesAreGuardedWhateverTheirCase) {
  World world;
  world.containers = {
      {"a1", "api-db-1", "ghcr.io/supabase/postgres:15", "api", 10},
      {"b2", "web", "nginx:latest", std::nullopt, 20},
      {"c3", "cache", "Redis:7", std::nullopt, 30},
      {"d4", "search", "docker.elastic.co/elasticsearch/elasticsearch:8.15.0", std::nullopt, 40},
  };
  const auto items = detect(world);
  ASSERT_EQ(items.size(), 4u);
  EXPECT_TRUE(items[0].guarded);
  EXPECT_EQ(items[0].project, "api");
  EXPECT_FALSE(items[1].guarded);
  EXPECT_FALSE(items[1].project);
  EXPECT_TRUE(items[2].guarded);
  EXPECT_TRUE(items[3].guarded);
  EXPECT_EQ(items[3].id, "container:d4");
  EXPECT_EQ(items[3].key, "container:search");
  EXPECT_EQ(items[3].memory, 40u);
  EXPECT_FALSE(items[3].counted);
}

}  // namespace
}  // namespace corvane
