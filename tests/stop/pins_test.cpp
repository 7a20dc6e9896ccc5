#include "stop/pins.h"

#include <fstream>

#include <gtest/gtest.h>

#include "platform/defaults.h"
#include "support/fake_programs.h"

namespace corvane {
namespace {

TEST(PinsTest, StringValuesOnlyAndKeysAsWritten) {
  const std::string file = testing_support::makeTempDir("pins") + "/suite.plist";
  const platform::DefaultsStore suite(file);
  EXPECT_TRUE(readPins(suite).empty());  // no suite file yet
  ASSERT_TRUE(suite.writeDictionary("pins", {{"db:postgres:5432", std::string("PostgreSQL")}, {"x", std::string()}}));
  const Pins pins = readPins(suite);
  EXPECT_EQ(pins, (Pins{{"db:postgres:5432", "PostgreSQL"}, {"x", ""}}));
  EXPECT_TRUE(isPinned(pins, {.key = "db:postgres:5432"}));
  EXPECT_FALSE(isPinned(pins, {.key = "DB:postgres:5432"}));

  // One value of another type means no pins at all.
  std::ofstream(file) << "<plist version=\"1.0\"><dict><key>pins</key><dict><key>a</key><string>x</string>"
                         "<key>b</key><integer>1</integer></dict></dict></plist>";
  EXPECT_TRUE(readPins(suite).empty());
  std::ofstream(file) << "<plist version=\"1.0\"><dict><key>pins</key><array/></dict></plist>";
  EXPECT_TRUE(readPins(suite).empty());
}

}  // namespace
}  // namespace corvane
