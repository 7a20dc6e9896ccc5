#include "platform/linux/meminfo.h"

#include <gtest/gtest.h>

namespace corvane::platform::linux_proc {
namespace {

TEST(MeminfoTest, PressureLevelsAndSwap) {
  const auto psi = [](const std::string& some, const std::string& full) {
    return "some avg10=" + some + " avg60=0.00 avg300=0.00 total=9\n"
           "full avg10=" + full + " avg60=0.00 avg300=0.00 total=0\n";
  };
  EXPECT_EQ(levelFromPSI(psi("0.00", "0.00")), 1);
  EXPECT_EQ(levelFromPSI(psi("10.00", "9.99")), 2);
  EXPECT_EQ(levelFromPSI(psi("45.10", "10.00")), 4);
  EXPECT_FALSE(levelFromPSI(""));
  EXPECT_FALSE(levelFromPSI("garbage\n"));

  const char* text =
      "MemTotal:       1000000 kB\nMemFree:  1 kB\nMemAvailable:    100000 kB\n"
      "SwapTotal:       2048 kB\nSwapFree:        1024 kB\n";
  EXPECT_EQ(levelFromMeminfo(text), 2);
  EXPECT_EQ(swapUsedFromMeminfo(text), 1024u * 1024u);
  EXPECT_EQ(levelFromMeminfo("MemTotal: 100 kB\nMemAvailable: 4 kB\n"), 4);
  EXPECT_EQ(levelFromMeminfo("MemTotal: 100 kB\nMemAvailable: 15 kB\n"), 1);
  EXPECT_FALSE(levelFromMeminfo("MemTotal: 0 kB\nMemAvailable: 0 kB\n"));
  EXPECT_EQ(swapUsedFromMeminfo("SwapTotal: 0 kB\nSwapFree: 0 kB\n"), 0u);
  EXPECT_EQ(swapUsedFromMeminfo(""), 0u);
  // "MemAvailable" must not be read from a longer key that starts the same way.
  EXPECT_FALSE(meminfoValue("MemAvailableX: 5 kB\n", "MemAvailable"));
}

}  // namespace
}  // namespace corvane::platform::linux_proc
