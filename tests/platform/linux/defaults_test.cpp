#include "platform/defaults.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <plist/plist.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform/property_list.h"
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

// A binary list {"pins": [[...]]} of arrays `levels` deep, each holding `width` references to the next.
std::string binaryChain(size_t levels, size_t width) {
  std::string bytes = "bplist00";
  std::vector<size_t> offsets;
  const auto reference = [&bytes](size_t index) { bytes += {static_cast<char>(index >> 8), static_cast<char>(index)}; };
  offsets.push_back(bytes.size());
  bytes += '\xD1';  // a dictionary of one key, then the key and the value
  reference(1);
  reference(2);
  offsets.push_back(bytes.size());
  bytes += "\x54pins";
  for (size_t level = 0; level < levels; ++level) {
    offsets.push_back(bytes.size());
    const size_t count = level + 1 < levels ? width : 0;
    bytes += static_cast<char>(0xA0 | count);
    for (size_t k = 0; k < count; ++k) reference(3 + level);
  }
  const auto bigEndian = [&bytes](uint64_t value, int width) {
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
  };
  const size_t table = bytes.size();
  for (size_t offset : offsets) bigEndian(offset, 4);
  bytes += std::string(6, '\0') + "\x04\x02";  // offsets of 4 bytes, references of 2
  bigEndian(offsets.size(), 8);
  bigEndian(0, 8);
  bigEndian(table, 8);
  return bytes;
}

// A NUL character in any string or key makes the whole suite unreadable and leaves it unwritten, as
// do a file that is no property list and one that would crash libplist or exhaust the memory (deep
// nesting, references that expand to billions of nodes, a file past the size cap); a value that XML
// can't carry back unchanged leaves it unwritten too, though the rest stays readable.
TEST(DefaultsTest, CorruptOrUnfaithfulSuitesAreNeverWrittenNorAnyOnceClosed) {
  const std::string dir = testing_support::makeTempDir("corrupt");
  const auto repeated = [](const std::string& tag) {
    std::string text;
    for (int i = 0; i < 30'000; ++i) text += tag;
    return text + "</dict></plist>";
  };
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
      {"XML nested 30,000 deep", "<plist><dict><key>pins</key>" + repeated("<array>") + repeated("</array>"), false},
      {"binary nested 30,000 deep", binaryChain(30'000, 1), false},
      {"binary of 2^40 nodes", binaryChain(40, 2), false},
      {"past the size cap", formOf(dictOf({{"pins", dictOf({})}}), false) + std::string(maxPlistBytes, ' '), false},
  };
  for (const auto& c : cases) {
    const DefaultsStore store(dir + "/suite.plist");
    std::ofstream(store.file(), std::ios::binary | std::ios::trunc) << c.bytes;
    EXPECT_EQ(store.readDictionary("pins").has_value(), c.readable) << c.what;
    EXPECT_EQ(store.readDictionary("toolMisses"), std::nullopt) << c.what;
    EXPECT_FALSE(store.writeDictionary("toolMisses", {{"adb", dateFromSeconds(1767225600)}})) << c.what;
    EXPECT_EQ(readFile(store.file()), c.bytes) << c.what;
  }

  // Only regular files are read: a FIFO that no one writes to and an endless device are unreadable at
  // once, and stay what they are. In a child process, so that a wait for ever fails the test.
  const std::string fifo = dir + "/fifo.plist", zero = dir + "/zero.plist";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", zero);
  testing_support::Process reader([&] {
    for (const std::string& file : {fifo, zero})
      if (DefaultsStore(file).readDictionary("pins") || DefaultsStore(file).writeDictionary("pins", {})) _exit(1);
  });
  EXPECT_EQ(reader.waitExit(10), 0);
  EXPECT_TRUE(std::filesystem::is_fifo(fifo));
  EXPECT_EQ(std::filesystem::read_symlink(zero), "/dev/zero");

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
