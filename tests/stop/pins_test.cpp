#include "stop/pins.h"

#include <fstream>

#include <gtest/gtest.h>

#include "platform/defaults.h"
#include "support/fake_programs.h"
#include "support/user_files.h"

namespace corvane {
namespace {

TEST(PinsTest, ReadFromTheAppSuite) {
  SKIP_WHERE_USER_FILES_CANNOT_MOVE();
  const auto suite = platform::DefaultsStore::appSuite();
  EXPECT_TRUE(readPins().empty());  // no suite file yet
  ASSERT_TRUE(suite.writeDictionary("pins", {{"db:postgres:5432", std::string("PostgreSQL")}, {"x", std::string()}}));
  const Pins pins = readPins();
  EXPECT_EQ(pins, (Pins{{"db:postgres:5432", "PostgreSQL"}, {"x", ""}}));
  Item item;
  item.key = "db:postgres:5432";
  EXPECT_TRUE(isPinned(pins, item));
  item.key = "DB:postgres:5432";
  EXPECT_FALSE(isPinned(pins, item));
  std::filesystem::remove(suite.file());
}

TEST(PinsTest, OneValueOfAnotherTypeMeansNoPins) {
  const std::string file = testing_support::makeTempDir("pins") + "/suite.plist";
  std::ofstream(file) << "<plist version=\"1.0\"><dict><key>pins</key><dict><key>a</key><string>x</string>"
                         "<key>b</key><integer>1</integer></dict></dict></plist>";
  EXPECT_TRUE(readPins(platform::DefaultsStore(file)).empty());
  std::ofstream(file) << "<plist version=\"1.0\"><dict><key>pins</key><array/></dict></plist>";
  EXPECT_TRUE(readPins(platform::DefaultsStore(file)).empty());
}

}  // namespace
}  // namespace corvane
