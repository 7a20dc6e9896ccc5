#include "base/utf8.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

// Each bad sequence decodes to one U+FFFD of the length the repair replaces with one replacement.
TEST(UTF8Test, DecodingAndRepairAgreeOnEachSequence) {
  const std::string r = "\xEF\xBF\xBD";
  struct Case {
    std::string bytes;
    char32_t value;
    size_t length;
    std::string repaired;
  };
  for (const Case& c : std::initializer_list<Case>{{"a", 'a', 1, "a"},
                                                  {"\xC3\xA9", 0xE9, 2, "\xC3\xA9"},
                                                  {"\xE2\x82\xAC", 0x20AC, 3, "\xE2\x82\xAC"},
                                                  {"\xF4\x8F\xBF\xBF", 0x10FFFF, 4, "\xF4\x8F\xBF\xBF"},
                                                  {r, 0xFFFD, 3, r},  // a real U+FFFD stays one
                                                  {"\xE2\x82" "A", 0xFFFD, 2, r + "A"},  // truncated
                                                  {"\xF0\x9F\x9A", 0xFFFD, 3, r},     // truncated at the end
                                                  {"\xC0\xAF", 0xFFFD, 1, r + r},      // overlong: never a lead
                                                  {"\xE0\x80\xAF", 0xFFFD, 1, r + r + r},
                                                  {"\xED\xA0\x80", 0xFFFD, 1, r + r + r},       // surrogate
                                                  {"\xF4\x90\x80\x80", 0xFFFD, 1, r + r + r + r}}) {  // above U+10FFFF
    const DecodedScalar scalar = decodeUTF8(c.bytes, 0);
    EXPECT_EQ(scalar.value, c.value) << c.bytes;
    EXPECT_EQ(scalar.length, c.length) << c.bytes;
    EXPECT_EQ(repairedUTF8(c.bytes), c.repaired) << c.bytes;
  }
}

}  // namespace
}  // namespace corvane
