#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "anonymize/anonymizer.h"
#include "anonymize/hash.h"
#include "platform/sha256.h"

namespace corvane {
namespace {

std::string hex(const platform::Sha256Digest& digest) {
  std::string text;
  for (uint8_t byte : digest) {
    char two[3];
    std::snprintf(two, sizeof two, "%02x", byte);
    text += two;
  }
  return text;
}

TEST(Sha256Test, MatchesKnownVectors) {
  EXPECT_EQ(hex(platform::sha256("")), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(hex(platform::sha256("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(SaltedHashTest, IsTheDigestOfSaltThenNameAndChangesWithTheSalt) {
  // sha256("pepper-1shop") = dfc33b90…, sha256("pepper-2shop") = a7bf4b2a…
  EXPECT_EQ(saltedHash("pepper-1", "shop"), "dfc33b90");
  EXPECT_EQ(saltedHash("pepper-2", "shop"), "a7bf4b2a");
  EXPECT_EQ(Anonymizer("/Users/ann", "pepper-1").hash("shop"), "dfc33b90");
}

}  // namespace
}  // namespace corvane
