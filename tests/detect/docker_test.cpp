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

TEST(DockerEngineTest, VirtualMachineJoinsTheEngineResponsibleForIt) {
  const std::string vm = "/System/Library/Frameworks/Virtualization.framework/Versions/A/XPCServices/"
                         "com.apple.Virtualization.VirtualMachine.xpc/Contents/MacOS/com.apple.Virtualization.VirtualMachine";
  auto docker = makeProc(20, 1, vm);
  docker.responsible = 10;
  auto utm = makeProc(22, 1, vm);
  utm.responsible = 30;
  const auto items = detect(worldOf({
      makeProc(10, 1, "/Applications/Docker.app/Contents/MacOS/com.docker.backend"), docker,
      makeProc(21, 1, vm),  // nobody responsible for it
      utm, makeProc(30, 1, "/Applications/UTM.app/Contents/MacOS/UTM"),
  }));
  ASSERT_THAT(idsOf(items), ElementsAre("docker:Docker Desktop"));
  EXPECT_THAT(items[0].pids, ElementsAre(10, 20));
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
}

TEST(DockerEngineTest, EngineWhoseProcessesWereClaimedStillHasARow) {
  auto helper = makeProc(11, 10, "/Applications/OrbStack.app/Contents/MacOS/helper");
  helper.footprint = 50;
  const auto items = detect(worldOf({makeProc(10, 1, "/sdk/qemu-system-aarch64", {"qemu", "-avd", "P"}), helper}));
  ASSERT_THAT(idsOf(items), ElementsAre("avd:10", "docker:OrbStack"));
  EXPECT_THAT(items[1].pids, IsEmpty());
  EXPECT_EQ(items[1].memory, 0u);
}

TEST(ContainerTest, DatabaseImagesAreGuardedWhateverTheirCase) {
  World world;
  world.containers = {
      {"a1", "api-db-1", "ghcr.io/supabase/postgres:15", "api", 10},
      {"b2", "web", "nginx:latest", std::nullopt, 20},
      {"c3", "cache", "Redis:7", std::nullopt, 30},
  };
  const auto items = detect(world);
  ASSERT_EQ(items.size(), 3u);
  EXPECT_TRUE(items[0].guarded);
  EXPECT_FALSE(items[1].guarded);
  EXPECT_TRUE(items[2].guarded);
}

}  // namespace
}  // namespace corvane
