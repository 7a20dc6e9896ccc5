#include "activity/activity.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

using nlohmann::json;

Item stopped(Item::Kind kind, std::string key, std::optional<Stop> stop) {
  Item item;
  item.id = "row:1";
  item.key = std::move(key);
  item.kind = kind;
  item.title = "Row";
  item.memory = 1'500'000'000;
  item.stop = std::move(stop);
  return item;
}

TEST(UndoTest, DerivedFromTheStopMethod) {
  const auto udid = "3F2504E0-4F89-11D3-9A0C-0305E82C3301";
  EXPECT_EQ(undoFor(stopped(Item::Kind::simulator, "sim:x", Stop::simulator(udid, false))), Undo::boot(udid));
  EXPECT_EQ(undoFor(stopped(Item::Kind::simulator, "sim:x", Stop::simulator(udid, true))), std::nullopt);
  EXPECT_EQ(undoFor(stopped(Item::Kind::emulator, "avd:Pixel_8", Stop::emulator("emulator-5554"))),
            Undo::avd("Pixel_8"));
  EXPECT_EQ(undoFor(stopped(Item::Kind::emulator, "avd:", Stop::emulator(std::nullopt))), Undo::avd(""));
  EXPECT_EQ(undoFor(stopped(Item::Kind::emulator, "emulator", Stop::emulator(std::nullopt))), std::nullopt);
  EXPECT_EQ(undoFor(stopped(Item::Kind::container, "container:db", Stop::containers({"b2", "a1"}))),
            Undo::start({"b2", "a1"}));
  EXPECT_EQ(undoFor(stopped(Item::Kind::server, "server:x", Stop::signal())), std::nullopt);
  EXPECT_EQ(undoFor(stopped(Item::Kind::docker, "docker:x", std::nullopt)), std::nullopt);
}

TEST(UndoTest, JSONHasExactlyOneKey) {
  EXPECT_EQ(toJSON(Undo::boot("U")), json::parse(R"({"boot": {"udid": "U"}})"));
  EXPECT_EQ(toJSON(Undo::avd("Pixel_8")), json::parse(R"({"avd": {"_0": "Pixel_8"}})"));
  EXPECT_EQ(toJSON(Undo::start({"a1"})), json::parse(R"({"start": {"_0": ["a1"]}})"));
  EXPECT_EQ(decodeUndo(json::parse(R"({"boot": {"udid": "U"}, "avd": {"_0": "P"}})")).error,
            "Invalid number of keys found, expected one.");
  EXPECT_EQ(decodeUndo(json::object()).error, "Invalid number of keys found, expected one.");
  EXPECT_FALSE(decodeUndo(json::parse(R"({"relaunch": {}})")));
  EXPECT_FALSE(decodeUndo(json::parse(R"({"avd": {"_0": 3}})")));
}

TEST(ActivityTest, BuiltFromTheStoppedRow) {
  Item container = stopped(Item::Kind::container, "container:db", Stop::containers({"c0ffee"}));
  container.counted = false;
  const Activity a = makeActivity(container, dateFromSeconds(1'772'356'500.25), "Codex via MCP");
  EXPECT_EQ(a.memory, 0u);
  EXPECT_EQ(a.undo, Undo::start({"c0ffee"}));
  EXPECT_EQ(a.reason, "Codex via MCP");
  EXPECT_FALSE(a.undone);
  EXPECT_TRUE(decodeActivity(toJSON(a))) << a.id;  // a well-formed upper-case UUID
  EXPECT_EQ(a.id.find_first_of("abcdef"), std::string::npos);
  EXPECT_NE(a.id, makeActivity(container, a.date, "x").id);
}

TEST(ActivityTest, JSONFormWithAndWithoutUndo) {
  Activity a{"0B5E7A2C-1D3F-4A6B-8C9D-0E1F2A3B4C5D", dateFromReferenceSeconds(794'049'300.125),
             "iPhone 16", Item::Kind::simulator, 2'000'000'000, "corvane stop", Undo::boot("U"), false};
  const json expected = json::parse(R"({"id": "0B5E7A2C-1D3F-4A6B-8C9D-0E1F2A3B4C5D", "date": 794049300.125,
      "title": "iPhone 16", "kind": "simulator", "memory": 2000000000, "reason": "corvane stop",
      "undo": {"boot": {"udid": "U"}}, "undone": false})");
  EXPECT_EQ(toJSON(a), expected);
  EXPECT_EQ(decodeActivity(expected).value, a);

  a.undo.reset();
  EXPECT_FALSE(toJSON(a).contains("undo"));
  EXPECT_EQ(decodeActivity(toJSON(a)).value, a);
  json nullUndo = toJSON(a);
  nullUndo["undo"] = nullptr;
  EXPECT_EQ(decodeActivity(nullUndo).value, a);

  json lower = expected;
  lower["id"] = "0b5e7a2c-1d3f-4a6b-8c9d-0e1f2a3b4c5d";
  EXPECT_EQ(decodeActivity(lower).value->id, "0B5E7A2C-1D3F-4A6B-8C9D-0E1F2A3B4C5D");
}

TEST(ActivityTest, EveryKeyButUndoIsRequiredAndTyped) {
  const json good = toJSON(Activity{"0B5E7A2C-1D3F-4A6B-8C9D-0E1F2A3B4C5D", dateFromReferenceSeconds(1), "t",
                                    Item::Kind::gradle, 1, "r", std::nullopt, true});
  ASSERT_TRUE(decodeActivity(good));
  for (const char* key : {"id", "date", "title", "kind", "memory", "reason", "undone"}) {
    json missing = good;
    missing.erase(key);
    EXPECT_FALSE(decodeActivity(missing)) << key;
  }
  const std::vector<std::pair<const char*, json>> wrong = {
      {"id", "not-a-uuid"}, {"date", "2026-01-01"}, {"title", 5},        {"kind", "gradel"},
      {"memory", -1},       {"memory", 1.5},        {"reason", nullptr}, {"undone", 0},
      {"undo", {{"boot", {{"udid", 1}}}}},
  };
  for (const auto& [key, value] : wrong) {
    json bad = good;
    bad[key] = value;
    EXPECT_FALSE(decodeActivity(bad)) << key << " = " << value;
  }
}

}  // namespace
}  // namespace corvane
