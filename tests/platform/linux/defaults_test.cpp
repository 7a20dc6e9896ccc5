#include "platform/defaults.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <plist/plist.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "support/fake_programs.h"
#include "support/process.h"

namespace corvane::platform {
namespace {

using testing_support::readFile;

std::string formOf(plist_t root, bool binary) {
  char* bytes = nullptr;
  uint32_t length = 0;
  binary ? plist_to_bin(root, &bytes, &length) : plist_to_xml(root, &bytes, &length);
  std::string form(bytes, length);
  std::free(bytes);
  plist_free(root);
  return form;
}

plist_t dictOf(std::initializer_list<std::pair<const char*, plist_t>> items) {
  plist_t dict = plist_new_dict();
  for (const auto& [key, value] : items) plist_dict_set_item(dict, key, value);
  return dict;
}

TEST(DefaultsTest, WritesAreXMLAndKeepEveryOtherValueBinarySuitesAreRead) {
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
  // Writing what is there already leaves the file itself in place; a change replaces it.
  const auto inode = [&] {
    struct stat info{};
    return ::stat(store.file().c_str(), &info) == 0 ? info.st_ino : 0;
  };
  const auto first = inode();
  ASSERT_TRUE(store.writeDictionary("pins", {{"db:x", std::string("Postgres \xE2\x9C\x93")}}));
  EXPECT_EQ(inode(), first);
  ASSERT_TRUE(store.writeDictionary("pins", {}));
  EXPECT_NE(inode(), first);
  ASSERT_TRUE(store.writeDictionary("pins", {{"db:x", std::string("Postgres \xE2\x9C\x93")}}));

  // A binary suite of the desktop app is read, and every other value of it survives a write; an old
  // record with a fraction of a second is replaced, so it doesn't stop the write.
  const auto others = [] {
    plist_t list = plist_new_array();
    plist_array_append_item(list, plist_new_real(1.0 / 3));
    plist_array_append_item(list, plist_new_data("\0\1", 2));
    plist_array_append_item(list, plist_new_bool(1));
    return dictOf({{"list", list}, {"neg", plist_new_uint(static_cast<uint64_t>(-5))},
                   {"record", dictOf({{"when", plist_new_date(0, 0)}, {"count", plist_new_uint(3)}})},
                   {"flat", plist_new_string("\xC3\xA9")}});
  };
  plist_t before = others();
  plist_dict_set_item(before, "toolMisses", dictOf({{"adb", plist_new_date(1, 5)}}));
  std::ofstream(store.file(), std::ios::binary | std::ios::trunc) << formOf(before, true);
  EXPECT_EQ(store.readDictionary("record"),
            (DefaultsDictionary{{"count", std::monostate{}}, {"when", dateFromSeconds(978307200)}}));
  ASSERT_TRUE(store.writeDictionary("toolMisses", {{"adb", dateFromSeconds(1767225600)}}));
  plist_t after = nullptr;
  const std::string written = readFile(store.file());
  plist_from_memory(written.data(), static_cast<uint32_t>(written.size()), &after);
  ASSERT_NE(after, nullptr);
  plist_dict_remove_item(after, "toolMisses");
  EXPECT_EQ(formOf(after, true), formOf(others(), true));
}

// A NUL character in any string or key makes the whole suite unreadable and leaves it unwritten, as
// does a file that is no property list; a value that XML can't carry back unchanged leaves it unwritten
// too, though the rest stays readable.
TEST(DefaultsTest, CorruptOrUnfaithfulSuitesAreNeverWrittenNorAnyOnceClosed) {
  const std::string dir = testing_support::makeTempDir("corrupt");
  const auto nulled = [](plist_t root, bool binary) {  // "~" becomes NUL: a UTF-16 one after "é"
    std::string form = formOf(root, binary);
    std::replace(form.begin(), form.end(), '~', '\0');
    return form;
  };
  const struct {
    const char* what;
    std::string bytes;
    bool readable;
  } cases[] = {
      {"binary pin", nulled(dictOf({{"pins", dictOf({{"k", plist_new_string("a~b")}})}}), true), false},
      {"UTF-16 pin", nulled(dictOf({{"pins", dictOf({{"k", plist_new_string("\xC3\xA9~")}})}}), true), false},
      {"XML miss", nulled(dictOf({{"toolMisses", dictOf({{"ad~b", plist_new_date(0, 0)}})}}), false), false},
      {"date fraction", formOf(dictOf({{"pins", dictOf({})}, {"d", plist_new_date(1, 5)}}), true), true},
      {"no property list", "not a property list", false},
  };
  for (const auto& c : cases) {
    const DefaultsStore store(dir + "/suite.plist");
    std::ofstream(store.file(), std::ios::binary | std::ios::trunc) << c.bytes;
    EXPECT_EQ(store.readDictionary("pins").has_value(), c.readable) << c.what;
    EXPECT_EQ(store.readDictionary("toolMisses"), std::nullopt) << c.what;
    EXPECT_FALSE(store.writeDictionary("toolMisses", {{"adb", dateFromSeconds(1767225600)}})) << c.what;
    EXPECT_EQ(readFile(store.file()), c.bytes) << c.what;
  }

  // In a child process of its own, since closing is for the rest of the process's life.
  testing_support::Process child([&] {
    const DefaultsStore store(dir + "/closed.plist");
    const bool before = store.writeDictionary("pins", {{"a", std::string("b")}});
    closeDefaults();
    const bool after = store.writeDictionary("pins", {{"c", std::string("d")}});
    _exit(before && !after && store.readDictionary("pins")->count("a") == 1 ? 0 : 1);
  });
  EXPECT_EQ(child.waitExit(), 0);
}

}  // namespace
}  // namespace corvane::platform
