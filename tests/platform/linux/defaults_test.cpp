#include "platform/defaults.h"

#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>
#include <fstream>
#include <plist/plist.h>

#include <gtest/gtest.h>

#include "support/fake_programs.h"
#include "support/run_program.h"

namespace corvane::platform {
namespace {

using testing_support::readFile;

TEST(DefaultsTest, WritesAreXMLAndKeepTheOtherKeys) {
  const std::string dir = testing_support::makeTempDir("defaults");
  const DefaultsStore store(dir + "/new/suite.plist");
  EXPECT_EQ(store.readDictionary("pins"), std::nullopt);

  ASSERT_TRUE(store.writeDictionary("toolMisses", {{"adb", dateFromSeconds(1767225600.25)}}));
  ASSERT_TRUE(store.writeDictionary("pins", {{"db:x", std::string("Postgres \xE2\x9C\x93")}}));
  EXPECT_EQ(store.readDictionary("pins"), (DefaultsDictionary{{"db:x", std::string("Postgres \xE2\x9C\x93")}}));
  // XML dates keep whole seconds.
  EXPECT_EQ(store.readDictionary("toolMisses"), (DefaultsDictionary{{"adb", dateFromSeconds(1767225600)}}));
  EXPECT_NE(readFile(store.file()).find("<date>2026-01-01T00:00:00Z</date>"), std::string::npos);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir + "/new"), {}), 1);  // no temporary file left
}

TEST(DefaultsTest, BinarySuitesAreReadAndBrokenOnesLeftAlone) {
  const std::string dir = testing_support::makeTempDir("defaults");
  plist_t record = plist_new_dict();
  plist_dict_set_item(record, "when", plist_new_date(0, 0));
  plist_dict_set_item(record, "count", plist_new_uint(3));
  plist_t root = plist_new_dict();
  plist_dict_set_item(root, "record", record);
  plist_dict_set_item(root, "flat", plist_new_string("x"));
  char* bytes = nullptr;
  uint32_t length = 0;
  plist_to_bin(root, &bytes, &length);
  std::ofstream(dir + "/suite.plist", std::ios::binary).write(bytes, length);
  std::free(bytes);
  plist_free(root);

  const DefaultsStore store(dir + "/suite.plist");
  EXPECT_EQ(store.readDictionary("record"),
            (DefaultsDictionary{{"count", std::monostate{}}, {"when", dateFromSeconds(978307200)}}));
  EXPECT_EQ(store.readDictionary("flat"), std::nullopt);
  ASSERT_TRUE(store.writeDictionary("pins", {}));
  EXPECT_TRUE(store.readDictionary("record"));

  std::ofstream(dir + "/broken.plist") << "not a property list";
  EXPECT_FALSE(DefaultsStore(dir + "/broken.plist").writeDictionary("pins", {}));
  EXPECT_EQ(readFile(dir + "/broken.plist"), "not a property list");
}

}  // namespace
}  // namespace corvane::platform

namespace corvane::platform {
namespace {

// In a child process of its own, since closing is for the rest of the process's life.
TEST(DefaultsTest, NoWritesOnceClosed) {
  const std::string dir = testing_support::makeTempDir("closed");
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const DefaultsStore store(dir + "/suite.plist");
    const bool before = store.writeDictionary("pins", {{"a", std::string("b")}});
    closeDefaults();
    const bool after = store.writeDictionary("pins", {{"c", std::string("d")}});
    _exit(before && !after && store.readDictionary("pins")->count("a") == 1 ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

}  // namespace
}  // namespace corvane::platform
