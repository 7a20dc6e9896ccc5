#include "detect/item.h"
#include "support/item_decoding.h"

#include <gtest/gtest.h>

#include "base/json_text.h"

namespace corvane {
namespace {

using nlohmann::json;

Item sampleItem() {
  return {.id = "server:4121", .key = "server:/Users/ann/shop:Next.js", .kind = Item::Kind::server,
          .title = "Next.js :3000", .cwd = "/Users/ann/shop", .pids = {4121, 4122}, .memory = 1'200'000'000,
          .started = dateFromSeconds(1772356500), .ports = {3000}, .inbound = 2, .stop = Stop::signal(),
          .cpuTimeNanoseconds = 99, .cpuCores = 0.25};
}

TEST(StopTest, JSONHasExactlyOneKey) {
  EXPECT_EQ(toJSON(Stop::emulator(std::nullopt)), json::parse(R"({"emulator": {}})"));
  EXPECT_EQ(toJSON(Stop::containers({"a1", "b2"})), json::parse(R"({"containers": {"_0": ["a1", "b2"]}})"));
  EXPECT_EQ(toJSON(Stop::simulator("U", true)), json::parse(R"({"simulator": {"udid": "U", "previews": true}})"));
  EXPECT_EQ(toJSON(Stop::signal()), json::parse(R"({"signal": {}})"));

  for (const Stop& stop : {Stop::emulator(std::nullopt), Stop::emulator("emulator-5554"),
                           Stop::containers({"a1", "b2"}), Stop::simulator("U", false), Stop::signal()}) {
    auto back = decodeStop(toJSON(stop));
    ASSERT_TRUE(back) << back.error;
    EXPECT_EQ(*back.value, stop);
  }
  EXPECT_EQ(decodeStop(json::parse(R"({"signal": {}, "emulator": {}})")).error,
            "Invalid number of keys found, expected one.");
  EXPECT_EQ(decodeStop(json::parse(R"({"reboot": {}})")).error, "Stop has no case named \"reboot\".");
  EXPECT_FALSE(decodeStop(json::parse(R"({"simulator": {"udid": 1, "previews": true}})")));
  EXPECT_FALSE(decodeStop(json::parse(R"({"signal": []})")));
}

TEST(ItemTest, ItemsAndContainersRoundTripAndLeaveOutAbsentOptionals) {
  for (auto kind : allKinds) EXPECT_EQ(kindFromRawValue(rawValue(kind)), kind);
  EXPECT_FALSE(kindFromRawValue("simulatorapp"));
  Item item = sampleItem();
  json j = toJSON(item);
  for (auto key : {"project", "startedBy", "agentPID", "idleSince"}) EXPECT_FALSE(j.contains(key)) << key;
  auto back = decodeItem(j);
  ASSERT_TRUE(back) << back.error;
  EXPECT_EQ(*back.value, item);

  item.project = "shop";
  item.startedBy = "Claude Code";
  item.agentPID = 900;
  item.idleSince = dateFromSeconds(1772356000);
  item.stop.reset();
  back = decodeItem(json::parse(toJSON(item).dump()));
  ASSERT_TRUE(back) << back.error;
  EXPECT_EQ(*back.value, item);
  // Dates are written in whole seconds, rounded down, before 1970 too.
  item.started = dateFromSeconds(1772356500.999999);
  item.idleSince = dateFromSeconds(-1.5);
  EXPECT_EQ(toJSON(item)["started"], "2026-03-01T09:15:00Z");
  EXPECT_EQ(toJSON(item)["idleSince"], "1969-12-31T23:59:58Z");

  json bad = toJSON(item);
  bad["kind"] = "laptop";
  EXPECT_EQ(decodeItem(bad).error, "Item: \"laptop\" is not a kind.");
  bad = toJSON(item);
  bad["stop"] = json::parse(R"({"signal": {}, "emulator": {}})");
  EXPECT_EQ(decodeItem(bad).error, "Item: \"stop\": Invalid number of keys found, expected one.");
  EXPECT_FALSE(decodeItem(json("item")));

  for (Container c : {Container{"abc123", "shop-db-1", "postgres:16", "shop", 250'000'000},
                      Container{"abc123", "shop-db-1", "postgres:16", std::nullopt, 250'000'000}}) {
    EXPECT_EQ(toJSON(c).contains("project"), c.project.has_value());
    auto back = decodeContainer(toJSON(c));
    ASSERT_TRUE(back) << back.error;
    EXPECT_EQ(*back.value, c);
  }
  EXPECT_FALSE(decodeContainer(json{{"id", "x"}}));
}

TEST(EncodeJSONTest, PrettySortedWithEscapedSlashes) {
  std::string text = encodeJSON(toJSON(sampleItem()));
  EXPECT_NE(text.find("\"cwd\": \"\\/Users\\/ann\\/shop\""), std::string::npos) << text;
  EXPECT_LT(text.find("\"building\""), text.find("\"counted\""));
  EXPECT_LT(text.find("\"cpu\""), text.find("\"cpuTime\""));
  EXPECT_NE(text.find("\n  \"id\""), std::string::npos);
  EXPECT_EQ(encodeJSON(json::array()), "[]");
  EXPECT_EQ(encodeJSON(json("caf\xc3\xa9")), "\"caf\xc3\xa9\"");
  EXPECT_EQ(encodeJSON(json("\xff")), "");
}

}  // namespace
}  // namespace corvane
