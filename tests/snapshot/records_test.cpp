#include <gtest/gtest.h>

#include "base/utf8.h"
#include "snapshot/proc.h"

namespace corvane {
namespace {

using nlohmann::json;

const Proc sample{.pid = 4121, .ppid = 4100, .path = "/opt/homebrew/bin/node",
                  .args = {"node", "/Users/ann/shop/node_modules/.bin/next", "dev"}, .cwd = "/Users/ann/shop",
                  .footprint = 1'234'567'890'123ULL, .cpuTimeNanoseconds = 18'000'000'000ULL,
                  .started = dateFromSeconds(1772356500.123456), .listening = {3000, 9229}, .inbound = 3,
                  .name = "node"};

TEST(SnapshotTest, DatesKeepMicrosecondsSnapshotsRoundTripThroughAFileBadJSONIsAnErrorValue) {
  Date d = dateFromSeconds(1772356500.25);
  EXPECT_EQ(iso8601(d), "2026-03-01T09:15:00.25Z");
  EXPECT_EQ(iso8601(dateFromSeconds(1772356500)), "2026-03-01T09:15:00Z");
  EXPECT_EQ(parseISO8601("2026-03-01T09:15:00.25Z"), d);
  EXPECT_EQ(parseISO8601("2026-03-01T10:15:00.250+01:00"), d);
  EXPECT_EQ(parseISO8601("2026-03-01T04:15:00.25-0500"), d);
  EXPECT_EQ(iso8601(dateFromSeconds(-1.5)), "1969-12-31T23:59:58.5Z");
  for (auto bad : {"", "2026-03-01", "2026-13-01T00:00:00Z", "2026-03-01T09:15:00", "2026-03-01T09:15:00.Z",
                   "2026-03-01T09:15:00Zjunk", "2026-02-30T00:00:00Z"})
    EXPECT_FALSE(parseISO8601(bad)) << bad;

  // With and without a responsible process, which is left out of the JSON when absent; what doesn't
  // decode is an error value.
  const json good = toJSON(sample);
  EXPECT_FALSE(good.contains("responsible"));
  EXPECT_EQ(good["started"], "2026-03-01T09:15:00.123456Z");

  Snapshot s{{sample, sample}, dateFromSeconds(1772356512.5)};
  s.procs[1].pid = 4122;
  s.procs[1].responsible = 77;
  auto back = decodeSnapshot(json::parse(toJSON(s).dump()));
  ASSERT_TRUE(back) << back.error;
  EXPECT_EQ(*back.value, s);

  EXPECT_EQ(decodeSnapshot(json{{"taken", "2026-03-01T09:15:00Z"}}).error, "Snapshot: the key \"procs\" is missing.");
  EXPECT_EQ(decodeSnapshot(json{{"taken", "2026-03-01T09:15:00Z"}, {"procs", {1}}}).error,
            "Snapshot: process 0: Proc must be a JSON object.");
  auto broken = [&](auto change) {
    json j = good;
    change(j);
    return decodeProc(j);
  };
  EXPECT_EQ(broken([](json& j) { j.erase("pid"); }).error, "Proc: the key \"pid\" is missing.");
  EXPECT_EQ(broken([](json& j) { j["pid"] = "12"; }).error, "Proc: \"pid\" must be a 32-bit integer.");
  EXPECT_FALSE(broken([](json& j) { j["pid"] = 5000000000LL; }));
  EXPECT_FALSE(broken([](json& j) { j["listening"] = {3000, 70000}; }));
  EXPECT_FALSE(broken([](json& j) { j["args"] = {"a", 1}; }));
  EXPECT_FALSE(broken([](json& j) { j["started"] = "yesterday"; }));
  EXPECT_FALSE(broken([](json& j) { j["responsible"] = "x"; }));
  EXPECT_TRUE(broken([](json& j) { j["responsible"] = nullptr; }));
}

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
