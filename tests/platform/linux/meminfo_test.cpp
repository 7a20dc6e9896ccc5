#include "platform/linux/meminfo.h"

#include <gtest/gtest.h>

namespace corvane::platform::linux_proc {
namespace {

TEST(MeminfoTest, PSILevels) {
  EXPECT_EQ(levelFromPSI("some avg10=0.00 avg60=0.00 avg300=0.00 total=0\n"
                         "full avg10=0.00 avg60=0.00 avg300=0.00 total=0\n"),
            1);
  EXPECT_EQ(levelFromPSI("some avg10=10.00 avg60=0.00 avg300=0.00 total=9\n"
                         "full avg10=9.99 avg60=0.00 avg300=0.00 total=0\n"),
            2);
  EXPECT_EQ(levelFromPSI("some avg10=45.10 avg60=0.00 avg300=0.00 total=9\n"
                         "full avg10=10.00 avg60=0.00 avg300=0.00 total=0\n"),
            4);
  EXPECT_FALSE(levelFromPSI(""));
  EXPECT_FALSE(levelFromPSI("garbage\n"));
}

TEST(MeminfoTest, AvailableRatioAndSwap) {
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
