// Simulators, emulators, JVM daemons: the cases that trip their matching.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "detect/pipeline.h"
#include "detect/world_fixture.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::findItem;
using testing::makeProc;
using testing::worldOf;

const std::string launchdSim = "/Library/Developer/PrivateFrameworks/CoreSimulator.framework/Resources/bin/launchd_sim";
const std::string udid = "0A1B2C3D-4E5F-4061-8293-A4B5C6D7E8F9";

Proc simulator(int32_t pid, int32_t ppid, const std::string& folder) {
  return makeProc(pid, ppid, launchdSim, {"launchd_sim", folder + "/data/var/run/launchd_bootstrap.plist"});
}

Proc qemu(int32_t pid, std::vector<std::string> args, std::vector<uint16_t> listening) {
  auto p = makeProc(pid, 1, "/sdk/emulator/qemu/darwin-aarch64/qemu-system-aarch64", std::move(args));
  p.listening = std::move(listening);
  return p;
}

TEST(SimulatorTest, DeviceFolderMustHoldAnUpperCaseUUID) {
  const std::string devices = "/Users/ann/Library/Developer/CoreSimulator/Devices/";
  std::string lower = udid;
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  const auto items = detect(worldOf({
      simulator(10, 1, devices + lower),
      simulator(11, 1, devices + "not-a-device"),
      simulator(12, 1, devices + udid.substr(0, 35)),
      makeProc(13, 1, launchdSim, {"launchd_sim"}),
      simulator(14, 1, "/x/" + udid + "X"),  // no slash after it
  }));
  EXPECT_THAT(items, IsEmpty());
}

TEST(SimulatorTest, SameDeviceTwiceAndUnnamedPreviews) {
  const std::string folder = "/Users/ann/Library/Developer/CoreSimulator/Devices/" + udid;
  auto first = simulator(10, 1, folder);
  auto app = makeProc(11, 10, "/sim/SpringBoard");
  app.footprint = 100;
  auto second = simulator(12, 10, folder);  // inside the first, so the first owns it
  auto preview = simulator(20, 1, "/Users/ann/Library/Developer/Xcode/UserData/Previews/Simulator Devices/" +
                                      std::string("11111111-2222-3333-4444-555555555555"));
  const auto items = detect(worldOf({first, app, second, preview}));
  ASSERT_EQ(items.size(), 3u);
  EXPECT_EQ(items[0].id, "sim:" + udid);
  EXPECT_EQ(items[1].id, "sim:" + udid);
  EXPECT_EQ(items[0].memory, 100u);
  EXPECT_THAT(items[1].pids, IsEmpty());
  EXPECT_EQ(items[1].memory, 0u);
  EXPECT_EQ(items[2].title, "Xcode Previews · Simulator");
  EXPECT_EQ(items[2].stop, Stop::simulator("11111111-2222-3333-4444-555555555555", true));
}

TEST(SimulatorTest, ClaimedProcessIsNeverCountedAgain) {
  const std::string folder = "/Users/ann/Library/Developer/CoreSimulator/Devices/" + udid;
  // A Metro bundler and a Postgres that happen to run inside the device belong to the device.
  auto metro = makeProc(11, 10, "/usr/bin/node", {"node", "react-native", "start"}, "/Users/ann/m");
  metro.listening = {8081};
  auto postgres = makeProc(12, 10, "/usr/bin/postgres", {"postgres"}, "/Users/ann/m");
  const auto items = detect(worldOf({simulator(10, 1, folder), metro, postgres}));
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0].kind, Item::Kind::simulator);
  EXPECT_EQ(items[0].pids.size(), 3u);
}

TEST(EmulatorTest, SerialComesFromAnEvenConsolePort) {
  const auto items = detect(worldOf({
      qemu(10, {"qemu-system-aarch64", "-avd", "Pixel_8_API_35"}, {5037, 5555}),
      qemu(11, {"qemu-system-aarch64", "-avd", "Tablet"}, {5554, 5555}),
      qemu(12, {"qemu-system-aarch64", "-avd", "Far"}, {5684}),
      qemu(13, {"qemu-system-aarch64", "-netdelay", "none"}, {5556}),
      qemu(14, {"qemu-system-aarch64", "-avd"}, {5558}),
  }));
  ASSERT_EQ(items.size(), 3u);
  EXPECT_EQ(items[0].title, "Pixel 8 API 35");
  EXPECT_EQ(items[0].key, "avd:Pixel_8_API_35");
  EXPECT_EQ(items[0].stop, Stop::emulator(std::nullopt));
  EXPECT_EQ(items[1].stop, Stop::emulator("emulator-5554"));
  EXPECT_EQ(items[2].stop, Stop::emulator(std::nullopt));
}

TEST(DaemonTest, GradleVersionFollowsTheMainClass) {
  const std::string java = "/usr/lib/jvm/bin/java";
  const std::string gradle = "org.gradle.launcher.daemon.bootstrap.GradleDaemon";
  const auto items = detect(worldOf({
      makeProc(10, 1, java, {"java", "-cp", "g.jar", gradle, "8.7"}),
      makeProc(11, 1, java, {"java", "-cp", "g.jar", gradle}),
      makeProc(12, 1, java, {"java", "-cp", "g.jar", "GradleDaemon", "8.7"}),
  }));
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(items[0].key, "gradle 8.7");
  EXPECT_EQ(items[0].title, "Gradle daemon 8.7");
  EXPECT_EQ(items[1].key, "gradle");
  EXPECT_EQ(items[1].title, "Gradle daemon");
}

TEST(DaemonTest, KotlinDaemonInsideGradleIsItsOwnRow) {
  const std::string java = "/usr/lib/jvm/bin/java";
  const auto items = detect(worldOf({
      makeProc(10, 1, java, {"java", "org.gradle.launcher.daemon.bootstrap.GradleDaemon", "8.7"}),
      makeProc(11, 10, java, {"java", "org.jetbrains.kotlin.daemon.KotlinCompileDaemon"}),
  }));
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(items[0].id, "kotlin:11");
  EXPECT_THAT(items[1].pids, ElementsAre(10));
}

}  // namespace
}  // namespace corvane
