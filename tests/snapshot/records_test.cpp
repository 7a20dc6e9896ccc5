#include <gtest/gtest.h>

#include "snapshot/proc.h"
#include "support/fake_programs.h"

namespace corvane {
namespace {

using nlohmann::json;

const Proc sample{.pid = 4121, .ppid = 4100, .path = "/opt/homebrew/bin/node",
                  .args = {"node", "/Users/ann/shop/node_modules/.bin/next", "dev"}, .cwd = "/Users/ann/shop",
                  .footprint = 1'234'567'890'123ULL, .cpu = 18'000'000'000ULL,
                  .started = dateFromSeconds(1772356500.123456), .listening = {3000, 9229}, .inbound = 3,
                  .name = "node"};

TEST(DateTest, ISO8601KeepsMicrosecondsAndReadsOffsets) {
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
}

// With and without a responsible process, which is left out of the JSON when absent; what doesn't
// decode is an error value.
TEST(SnapshotTest, RoundTripsThroughAFileAndMalformedJSONIsAnErrorValue) {
  EXPECT_EQ(toJSON(Snapshot{{}, dateFromSeconds(1772356500)})["procs"], json::array());
  const json good = toJSON(sample);
  EXPECT_FALSE(good.contains("responsible"));
  EXPECT_EQ(good["started"], "2026-03-01T09:15:00.123456Z");

  Snapshot s{{sample, sample}, dateFromSeconds(1772356512.5)};
  s.procs[1].pid = 4122;
  s.procs[1].responsible = 77;
  std::string path = testing_support::makeTempDir("snapshot") + "/snapshot.json";
  ASSERT_TRUE(writeSnapshotFile(s, path));
  auto back = readSnapshotFile(path);
  ASSERT_TRUE(back) << back.error;
  EXPECT_EQ(*back.value, s);

  EXPECT_FALSE(readSnapshotFile(path + ".missing"));
  auto noProcs = decodeSnapshot(json{{"taken", "2026-03-01T09:15:00Z"}});
  EXPECT_EQ(noProcs.error, "Snapshot: the key \"procs\" is missing.");
  auto badProc = decodeSnapshot(json{{"taken", "2026-03-01T09:15:00Z"}, {"procs", {1}}});
  EXPECT_EQ(badProc.error, "Snapshot: process 0: Proc must be a JSON object.");
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

}  // namespace
}  // namespace corvane
