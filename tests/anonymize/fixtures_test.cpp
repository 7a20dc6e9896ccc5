// The detection fixtures, anonymized: nothing private survives, and detection still sees the same stack.
#include <algorithm>
#include <map>
#include <regex>

#include <gtest/gtest.h>

#include "anonymize/anonymizer.h"
#include "detect/pipeline.h"
#include "detect/world_fixture.h"

namespace corvane {
namespace {

std::map<std::string, Item> byId(const World& world) {
  std::map<std::string, Item> items;
  for (auto& item : detect(world)) items.emplace(item.id, std::move(item));
  return items;
}

bool someServerOwns(const std::map<std::string, Item>& items, int32_t pid) {
  for (const auto& [id, item] : items)
    if (item.kind == Item::Kind::server && std::count(item.pids.begin(), item.pids.end(), pid)) return true;
  return false;
}

void expectAnonymous(const std::string& fixture, const std::string& home, const std::vector<std::string>& secrets) {
  World world = testing::loadWorld(fixture);
  World shared = world;
  shared.snapshot = Anonymizer(home, "fixture-salt").anonymize(world.snapshot);

  const std::string text = toJSON(shared.snapshot).dump();
  for (const auto& secret : secrets) {
    const std::regex word("(^|[^A-Za-z0-9])" + secret + "([^A-Za-z0-9]|$)");
    EXPECT_FALSE(std::regex_search(text, word)) << fixture << " still names " << secret;
  }
  EXPECT_EQ(text.find(home + "/"), std::string::npos);
  // Every row is found again with its id and kind, except emulators: the Android SDK lives in the home
  // folder, and an executable started by its full path there is a private name, so the emulator's
  // "qemu-system-" name is hashed and its process reads as a plain dev server.
  const auto before = byId(world), after = byId(shared);
  for (const auto& [id, item] : before) {
    if (item.kind == Item::Kind::emulator) {
      EXPECT_TRUE(someServerOwns(after, item.pids.at(0))) << fixture << " " << id;
      continue;
    }
    auto found = after.find(id);
    ASSERT_NE(found, after.end()) << fixture << " lost " << id;
    EXPECT_EQ(found->second.kind, item.kind) << fixture << " " << id;
  }
}

TEST(AnonymizedFixturesTest, NothingPrivateSurvivesAndRowsKeepTheirKinds) {
  // The user's own name is not hidden where it stands alone (postgres titles its workers
  // "postgres: ann shop ..."): only names seen as folders are known to be private.
  expectAnonymous("macos_laptop.json", "/Users/ann", {"shop", "api", "mobile", "infra", "blog"});
  expectAnonymous("linux_workstation.json", "/home/dev", {"webapp", "api"});
}

}  // namespace
}  // namespace corvane
