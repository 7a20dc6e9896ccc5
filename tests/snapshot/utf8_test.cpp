#include "base/utf8.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(UTF8Test, ValidTextIsKeptAndEachBadSequenceBecomesOneReplacement) {
  const std::string valid = "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x9A\x80 /Users/ann";
  EXPECT_EQ(repairedUTF8(valid), valid);
  EXPECT_EQ(repairedUTF8(std::string("a\0b", 3)), std::string("a\0b", 3));
  const std::string r = "\xEF\xBF\xBD";
  EXPECT_EQ(repairedUTF8("a\xFF" "b"), "a" + r + "b");
  EXPECT_EQ(repairedUTF8("\xE2\x82" "A"), r + "A");        // truncated sequence: one replacement
  EXPECT_EQ(repairedUTF8("x\xF0\x9F\x9A"), "x" + r);       // truncated at the end
  EXPECT_EQ(repairedUTF8("\xC0\xAF"), r + r);              // overlong: never a valid lead
  EXPECT_EQ(repairedUTF8("\xE0\x80\xAF"), r + r + r);      // overlong three-byte form
  EXPECT_EQ(repairedUTF8("\xED\xA0\x80"), r + r + r);      // surrogate
  EXPECT_EQ(repairedUTF8("\xF4\x90\x80\x80"), r + r + r + r);  // above U+10FFFF
  EXPECT_EQ(repairedUTF8("\x80\x80"), r + r);
}

TEST(UTF8Test, DecodesOneScalarAndItsLength) {
  struct Case {
    const char* bytes;
    char32_t value;
    size_t length;
  };
  for (const Case& c : std::initializer_list<Case>{{"a", 'a', 1},
                                                  {"\xC3\xA9", 0xE9, 2},
                                                  {"\xE2\x82\xAC", 0x20AC, 3},
                                                  {"\xF0\x9F\x9A\x80", 0x1F680, 4},
                                                  {"\xF4\x8F\xBF\xBF", 0x10FFFF, 4},
                                                  {"\xE2\x82" "A", 0xFFFD, 2},
                                                  {"\xF0\x9F\x9A", 0xFFFD, 3},
                                                  {"\xC0\xAF", 0xFFFD, 1},
                                                  {"\xED\xA0\x80", 0xFFFD, 1}}) {
    const DecodedScalar scalar = decodeUTF8(c.bytes, 0);
    EXPECT_EQ(scalar.value, c.value) << c.bytes;
    EXPECT_EQ(scalar.length, c.length) << c.bytes;
  }
  EXPECT_EQ(repairedUTF8("\xEF\xBF\xBD"), "\xEF\xBF\xBD");  // a real U+FFFD stays one
}

}  // namespace
}  // namespace corvane
