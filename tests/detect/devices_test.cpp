// Simulators, emulators and JVM daemons: the cases that trip their matching.
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

const std::string udid = "0A1B2C3D-4E5F-4061-8293-A4B5C6D7E8F9";
const std::string devices = "/Users/ann/Library/Developer/CoreSimulator/Devices/";

Proc simulator(int32_t pid, int32_t ppid, const std::string& folder) {
  return makeProc(pid, ppid, "/CoreSimulator.framework/Resources/bin/launchd_sim",
                  {"launchd_sim", folder + "/data/var/run/launchd_bootstrap.plist"});
}

TEST(SimulatorTest, DeviceFolderMustHoldAnUpperCaseUUIDBetweenSlashes) {
  std::string lower = udid;
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  const auto items = detect(worldOf({
      simulator(10, 1, devices + lower),
      simulator(11, 1, devices + "not-a-device"),
      simulator(12, 1, devices + udid.substr(0, 35)),
      simulator(13, 1, "/x/" + udid + "X"),
      makeProc(14, 1, "/bin/launchd_sim", {"launchd_sim"}),
  }));
  EXPECT_THAT(items, IsEmpty());
}

TEST(SimulatorTest, SameDeviceTwiceAndUnnamedPreviews) {
  auto springBoard = makeProc(11, 10, "/sim/SpringBoard");
  springBoard.footprint = 100;
  const std::string previewUDID = "11111111-2222-3333-4444-555555555555";
  const auto items = detect(worldOf({
      simulator(10, 1, devices + udid), springBoard,
      simulator(12, 10, devices + udid),  // inside the first, which claimed it
      simulator(20, 1, "/Users/ann/Library/Developer/Xcode/UserData/Previews/Simulator Devices/" + previewUDID),
  }));
  EXPECT_THAT(idsOf(items), ElementsAre("sim:" + udid, "sim:" + udid, "sim:" + previewUDID));
  EXPECT_EQ(items[0].memory, 100u);
  EXPECT_THAT(items[1].pids, IsEmpty());
  EXPECT_EQ(items[1].memory, 0u);
  EXPECT_FALSE(items[1].started);
  EXPECT_EQ(items[2].title, "Xcode Previews · Simulator");
}

TEST(EmulatorTest, SerialComesFromAnEvenConsolePort) {
  const std::string qemu = "/sdk/emulator/qemu/darwin-aarch64/qemu-system-aarch64";
  const auto items = detect(worldOf({
      makeProc(10, 1, qemu, {"qemu", "-avd", "A"}, "/", {5037, 5555}),
      makeProc(11, 1, qemu, {"qemu", "-avd", "B"}, "/", {5554, 5555}),
      makeProc(12, 1, qemu, {"qemu", "-avd", "C"}, "/", {5684}),
      makeProc(13, 1, qemu, {"qemu", "-netdelay", "none"}, "/", {5556}),
      makeProc(14, 1, qemu, {"qemu", "-avd"}, "/", {5558}),
  }));
  ASSERT_THAT(idsOf(items), ElementsAre("avd:10", "avd:11", "avd:12"));
  EXPECT_EQ(items[0].stop, Stop::emulator(std::nullopt));
  EXPECT_EQ(items[1].stop, Stop::emulator("emulator-5554"));
  EXPECT_EQ(items[2].stop, Stop::emulator(std::nullopt));
}

}  // namespace
}  // namespace corvane
