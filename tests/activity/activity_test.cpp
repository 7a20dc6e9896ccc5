#include "activity/activity.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

using nlohmann::json;

std::optional<Undo> undoOf(std::string key, std::optional<Stop> stop) {
  Item item{.key = std::move(key)};
  item.stop = std::move(stop);
  return undoFor(item);
}

// The undo is derived from the stop method; the JSON form is strict.
TEST(ActivityTest, UndoOfTheStopAndStrictJSONForm) {
  EXPECT_EQ(undoOf("sim:U", Stop::simulator("U", false)), Undo::boot("U"));
  EXPECT_EQ(undoOf("sim:U", Stop::simulator("U", true)), std::nullopt);
  EXPECT_EQ(undoOf("avd:Pixel_8", Stop::emulator("emulator-5554")), Undo::avd("Pixel_8"));
  EXPECT_EQ(undoOf("emulator", Stop::emulator(std::nullopt)), std::nullopt);
  EXPECT_EQ(undoOf("server:x", Stop::signal()), std::nullopt);
  EXPECT_EQ(undoOf("docker:x", std::nullopt), std::nullopt);

  const json withUndo = json::parse(R"({"id": "0B5E7A2C-1D3F-4A6B-8C9D-0E1F2A3B4C5D", "date": 794049300.125,
      "title": "iPhone 16", "kind": "simulator", "memory": 2000000000, "reason": "corvane stop",
      "undo": {"boot": {"udid": "U"}}, "undone": false})");
  Activity a{"0B5E7A2C-1D3F-4A6B-8C9D-0E1F2A3B4C5D", *dateFromReferenceSeconds(794'049'300.125), "iPhone 16",
             Item::Kind::simulator, 2'000'000'000, "corvane stop", Undo::boot("U"), false};
  EXPECT_EQ(toJSON(a), withUndo);
  EXPECT_EQ(decodeActivity(withUndo).value, a);
  // Each undo is an object of exactly one key, the name of its case.
  for (const auto& [undo, form] : std::initializer_list<std::pair<Undo, const char*>>{
           {Undo::avd("Pixel_8"), R"({"avd": {"_0": "Pixel_8"}})"},
           {Undo::start({"a1"}), R"({"start": {"_0": ["a1"]}})"}}) {
    a.undo = undo;
    EXPECT_EQ(toJSON(a)["undo"], json::parse(form));
    EXPECT_EQ(decodeActivity(toJSON(a)).value, a);
  }
  EXPECT_EQ(decodeUndo(json::object()).error, "Invalid number of keys found, expected one.");
  a.undo.reset();
  EXPECT_FALSE(toJSON(a).contains("undo"));
  EXPECT_EQ(decodeActivity(toJSON(a)).value, a);

  for (const char* key : {"id", "date", "title", "kind", "memory", "reason", "undone"}) {
    json missing = withUndo;
    missing.erase(key);
    EXPECT_FALSE(decodeActivity(missing)) << key;
  }
  const std::vector<std::pair<const char*, json>> wrong = {
      {"id", "not-a-uuid"}, {"date", "2026-01-01"}, {"kind", "gradel"}, {"memory", -1}, {"memory", 1.5},
      {"reason", nullptr}, {"undone", 0}, {"date", 9.3e12}, {"date", -9.3e12}, {"undo", {{"boot", {{"udid", 1}}}}},
      {"undo", {{"relaunch", json::object()}}}, {"undo", {{"boot", {{"udid", "U"}}}, {"avd", {{"_0", "P"}}}}}};
  for (const auto& [key, value] : wrong) {
    json bad = withUndo;
    bad[key] = value;
    EXPECT_FALSE(decodeActivity(bad)) << key << " = " << value;
  }
  // The farthest dates a Date holds are written back as they were read.
  for (const double far : {9.2e12, -9.2e12}) {
    json edge = withUndo;
    edge["date"] = far;
    EXPECT_EQ(toJSON(decodeActivity(edge).value.value_or(a))["date"], far) << far;
  }
}

}  // namespace
}  // namespace corvane
