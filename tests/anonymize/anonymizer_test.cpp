// The anonymizer's rules one name at a time, over a whole snapshot, and over the detection fixtures.
#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "anonymize/anonymizer.h"
#include "anonymize/hash.h"
#include "anonymize/rules.h"
#include "detect/pipeline.h"
#include "detect/world_fixture.h"

namespace corvane {
namespace {

class RulesTest : public ::testing::Test {
 protected:
  static std::string h(std::string_view name) { return saltedHash("s", name); }
  std::string path(std::string_view p, bool keepLast = false) {
    return rewritePath(state, p, keepLast ? LastComponent::kept : LastComponent::rewritten);
  }
  std::string component(std::string_view c) { return rewriteComponent(state, c); }
  std::string arg(std::string_view a) { return rewriteArgument(state, a); }

  RewriteState state{"/Users/ann", "s", {}, false};
};

TEST_F(RulesTest, ComponentsWithoutLettersStayPathsLoseHomeAndPrivateFolders) {
  // Letters are those of any script: a dash, an emoji, a currency sign, lone accents and Arabic digits are none.
  for (const char* kept : {"0f2c3a7e-1b2d-4c5e-8F90-A1B2C3D4E5F6", "2024", "1.2.3", "", ".env", "~", "claude.exe",
                           "opencode.exe", "qwen", "Application Support", "claude", "postgres", "vite", "phx.server",
                           "2024\xE2\x80\x93" "2025", "\xF0\x9F\x9A\x80", "100\xE2\x82\xAC", "\xCC\x81\xCC\x81",
                           "\xD9\xA3\xD9\xA4"})
    EXPECT_EQ(component(kept), kept);
  EXPECT_TRUE(state.privateNames.empty());
  for (const char* hashed : {"0F2C3A7E-1B2D-4C5E-8F90-A1B2C3D4E5FG", "0F2C3A7E1B2D-4C5E-8F90-A1B2C3D4E5F6a", "a.b1",
                             "report.markdownx", "\xC3\xA9" "cole", "e\xCC\x81", "\xE6\x9D\xB1\xE4\xBA\xAC",
                             "\xE2\x84\xA6mega", "\xED\x95\x9C", "runserver", "artisan"})
    EXPECT_EQ(component(hashed), h(hashed));
  EXPECT_EQ(component("notes.txt"), h("notes") + ".txt");
  EXPECT_EQ(component("report.markdown"), h("report") + ".markdown");
  // An extension of letters with a combining accent is still letters only, and short.
  EXPECT_EQ(component("menu.cafe\xCC\x81"), h("menu") + ".cafe\xCC\x81");
  EXPECT_TRUE(state.privateNames.contains("notes") && state.privateNames.contains("notes.txt"));

  EXPECT_EQ(path("/Users/ann"), "~");
  EXPECT_EQ(path("/Users/ann/Projects/shop/web/server.js"),
            "~/Projects/" + h("shop") + "/" + h("web") + "/" + h("server") + ".js");
  EXPECT_EQ(path("/Users/annie/x"), "/Users/" + h("annie") + "/" + h("x"));
  EXPECT_EQ(path("/usr/local/secretproject/x"), "/usr/local/secretproject/x");
  EXPECT_EQ(path("/Users/ann/shop/node_modules/@acme/private-pkg/index.js"),
            "~/" + h("shop") + "/node_modules/@acme/private-pkg/index.js");
  EXPECT_EQ(path("/Users/ann/tools/mytool", true), "~/" + h("tools") + "/mytool");
  EXPECT_EQ(Anonymizer("/Users/ann/", "s").anonymize("/Users/ann/shop/bin/shop"),
            "~/" + h("shop") + "/bin/" + h("shop"));
  // A hash is the first bytes of sha256(salt + name): sha256("pepper-1shop") = dfc33b90…
  EXPECT_EQ(saltedHash("pepper-1", "shop"), "dfc33b90");
  EXPECT_EQ(Anonymizer("/Users/ann", "pepper-1").hash("shop"), "dfc33b90");
}

TEST_F(RulesTest, SecretsTokensAddressesAndPrivateNamesInArgumentsAreHashed) {
  EXPECT_EQ(arg("--api-key=VALUE"), "--api-key=" + h("VALUE"));
  EXPECT_EQ(arg("--password"), "--password");
  EXPECT_EQ(arg("hunter2"), h("hunter2"));
  EXPECT_EQ(arg("hunter2"), "hunter2");
  // Empty words between separators stay and do not use up the secret.
  EXPECT_EQ(arg("--Auth-Token=,VALUE"), "--Auth-Token=," + h("VALUE"));
  EXPECT_EQ(arg("a,,b;; x= 'y'"), "a,,b;; x= 'y'");
  // Every white space separates words, no-break and ideographic spaces too.
  for (const char* space : {"\xC2\xA0", "\xE3\x80\x80", "\xE2\x80\xA8", "\xC2\x85", "\t", "\xE2\x80\xAF"}) {
    state.secretNext = false;
    EXPECT_EQ(arg(std::string("password") + space + "hunter2"), "password" + (space + h("hunter2"))) << space;
  }
  state.secretNext = false;
  EXPECT_EQ(arg("\xE2\x84\xAA" "EY=v"), "\xE2\x84\xAA" "EY=" + h("v"));  // a Kelvin sign lower-cases to "k"

  // Words of 20 characters with a digit of any script look like tokens; accents don't add characters.
  std::string accented;
  for (int i = 0; i < 10; ++i) accented += "e\xCC\x81";
  for (const char* hashed :
       {"a1b2c3d4e5f6a7b8c9d0e1f2a3b4c5d6", "abcdefghijklmnopqrs1", "abcdefghijklmnopqrs\xD9\xA3"})
    EXPECT_EQ(arg(hashed), h(hashed));
  for (const std::string& kept : std::vector<std::string>{"abcdefghijklmnopqrstuvwxyzabcdef", "abcdefghijklmnopqr1",
                                                          accented + "1"})
    EXPECT_EQ(arg(kept), kept);
  EXPECT_EQ(arg("ann@github"), h("ann") + "@" + h("github"));
  EXPECT_EQ(arg("ann@localhost"), h("ann") + "@localhost");
  EXPECT_EQ(arg("--to=ann@127.0.0.1"), "--to=" + h("ann") + "@127.0.0.1");
  component("shop");
  EXPECT_EQ(arg("sh -c 'cd shop && npm start'"), "sh -c 'cd " + h("shop") + " && npm start'");
  EXPECT_EQ(arg("--config=./shop/app.json"), "--config=./" + h("shop") + "/" + h("app") + ".json");
}

TEST_F(RulesTest, AnExecutableIsHashedWhenItsNameIsPrivateAnywhereInTheSnapshot) {
  using testing::makeProc;
  const Proc own = makeProc(10, 1, "/Users/ann/tools/shop", {"shop", "--port", "3000"}, "/Users/ann", {3000});
  const Proc other = makeProc(11, 1, "/opt/homebrew/bin/node", {"node", "index.js"}, "/Users/ann/Projects/shop");
  const Proc tool = makeProc(12, 1, "/Users/ann/tools/mytool", {"mytool", "--token"}, "/Users/ann");
  const Proc next = makeProc(13, 1, "/opt/homebrew/bin/git", {"git", "status"}, "/Users/ann");
  Snapshot snapshot{{own, other, tool, next}, dateFromSeconds(1772356600)};

  const Anonymizer anonymizer("/Users/ann", "s");
  const Snapshot result = anonymizer.anonymize(snapshot);
  ASSERT_EQ(result.procs.size(), 4u);
  EXPECT_EQ(result.taken, snapshot.taken);

  const Proc& first = result.procs[0];
  EXPECT_EQ(first.path, "~/" + h("tools") + "/" + h("shop"));
  EXPECT_EQ(first.name, h("shop"));
  EXPECT_EQ(first.args, (std::vector<std::string>{h("shop"), "--port", "3000"}));
  EXPECT_EQ(first.cwd, "~");
  Proc untouched = first;  // every other field is copied as it was
  untouched.path = own.path, untouched.name = own.name, untouched.args = own.args, untouched.cwd = own.cwd;
  EXPECT_EQ(untouched, own);

  EXPECT_EQ(result.procs[2].name, "mytool");
  // A secret announced at the end of one command line does not hide the start of the next.
  EXPECT_EQ(result.procs[3].args, next.args);

  // Private names belong to one call: alone, the executable keeps its name.
  const Snapshot alone = anonymizer.anonymize(Snapshot{{own}, snapshot.taken});
  EXPECT_EQ(alone.procs[0].name, "shop");
}

// Nothing private survives, and detection still sees the same stack.
void expectAnonymous(const std::string& fixture, const std::string& home, const std::vector<std::string>& secrets) {
  SCOPED_TRACE(fixture);
  World world = testing::loadWorld(fixture);
  World shared = world;
  shared.snapshot = Anonymizer(home, "fixture-salt").anonymize(world.snapshot);

  const std::string text = toJSON(shared.snapshot).dump();
  for (const auto& secret : secrets) {
    const std::regex word("(^|[^A-Za-z0-9])" + secret + "([^A-Za-z0-9]|$)");
    EXPECT_FALSE(std::regex_search(text, word)) << "still names " << secret;
  }
  EXPECT_EQ(text.find(home + "/"), std::string::npos);
  // Every row is found again with its id and kind, except emulators: the Android SDK lives in the home
  // folder, and an executable started by its full path there is a private name, so the emulator's
  // "qemu-system-" name is hashed and its process reads as a plain dev server.
  const auto after = detect(shared);
  for (const Item& item : detect(world)) {
    if (item.kind == Item::Kind::emulator) {
      EXPECT_TRUE(std::any_of(after.begin(), after.end(), [&](const Item& row) {
        return row.kind == Item::Kind::server && std::count(row.pids.begin(), row.pids.end(), item.pids.at(0));
      })) << item.id;
      continue;
    }
    const Item* found = testing::findItem(after, item.id);
    ASSERT_TRUE(found) << "lost " << item.id;
    EXPECT_EQ(found->kind, item.kind) << item.id;
  }
}

TEST(AnonymizedFixturesTest, NothingPrivateSurvivesAndRowsKeepTheirKinds) {
  // The user's own name is not hidden where it stands alone (postgres titles its workers
  // "postgres: ann shop ..."): only names seen as folders are known to be private.
  expectAnonymous("macos_laptop.json", "/Users/ann", {"shop", "api", "mobile", "infra", "blog"});
  expectAnonymous("linux_workstation.json", "/home/dev", {"webapp", "api"});
  expectAnonymous("macos_agents.json", "/Users/ann", {"web", "api", "tools", "notes", "shop", "docs"});
}

}  // namespace
}  // namespace corvane
