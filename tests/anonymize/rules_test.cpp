#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "anonymize/anonymizer.h"
#include "anonymize/hash.h"
#include "anonymize/rules.h"

namespace corvane {
namespace {

class RulesTest : public testing::Test {
 protected:
  static std::string h(std::string_view name) { return saltedHash("s", name); }
  std::string path(std::string_view p, bool keepLast = false) { return rewritePath(state, p, keepLast); }
  std::string component(std::string_view c) { return rewriteComponent(state, c); }
  std::vector<std::string> arguments(const std::vector<std::string>& args) {
    std::vector<std::string> result;
    for (const auto& a : args) result.push_back(rewriteArgument(state, a));
    return result;
  }

  RewriteState state{"/Users/ann", "s", {}, false};
};

TEST_F(RulesTest, HomeBecomesTildeOnlyAsAWholeComponent) {
  EXPECT_EQ(path("/Users/ann"), "~");
  EXPECT_EQ(path("/Users/ann/Projects/shop/web/server.js"),
            "~/Projects/" + h("shop") + "/" + h("web") + "/" + h("server") + ".js");
  EXPECT_EQ(path("/Users/annie/x"), "/Users/" + h("annie") + "/" + h("x"));
  EXPECT_EQ(Anonymizer("/Users/ann/", "s").anonymize("/Users/ann/bin/mytool"), "~/bin/mytool");
}

TEST_F(RulesTest, PublicLocationsAndPackagePathsStayReadable) {
  EXPECT_EQ(path("/usr/local/secretproject/x"), "/usr/local/secretproject/x");
  EXPECT_EQ(path("/Applications/Acme Secret.app/Contents/MacOS/Acme"),
            "/Applications/Acme Secret.app/Contents/MacOS/Acme");
  EXPECT_EQ(path("/Users/ann/shop/node_modules/@acme/private-pkg/index.js"),
            "~/" + h("shop") + "/node_modules/@acme/private-pkg/index.js");
  // Prefixes are whole folders: "/usr" alone and "/usrlocal/" are ordinary paths.
  EXPECT_EQ(path("/usrlocal/shop"), "/" + h("usrlocal") + "/" + h("shop"));
}

TEST_F(RulesTest, ComponentsWithoutWordsStay) {
  const std::string device = "~/Library/Developer/CoreSimulator/Devices/0F2C3A7E-1B2D-4C5E-8F90-A1B2C3D4E5F6/data";
  EXPECT_EQ(path("/Users/ann/Library/Developer/CoreSimulator/Devices/0F2C3A7E-1B2D-4C5E-8F90-A1B2C3D4E5F6/data"),
            device);
  for (const char* kept : {"0f2c3a7e-1b2d-4c5e-8f90-a1b2c3d4e5f6", "2024", "1.2.3", "", ".env", "~",
                           "Application Support", "claude", "postgres"})
    EXPECT_EQ(component(kept), kept);
  EXPECT_TRUE(state.privateNames.empty());
  EXPECT_EQ(component("0F2C3A7E-1B2D-4C5E-8F90-A1B2C3D4E5FG"), h("0F2C3A7E-1B2D-4C5E-8F90-A1B2C3D4E5FG"));
  EXPECT_EQ(component("0F2C3A7E1B2D-4C5E-8F90-A1B2C3D4E5F6a"), h("0F2C3A7E1B2D-4C5E-8F90-A1B2C3D4E5F6a"));
}

TEST_F(RulesTest, OnlyShortLetterExtensionsSurvive) {
  EXPECT_EQ(component("notes.txt"), h("notes") + ".txt");
  EXPECT_EQ(component("a.b1"), h("a.b1"));
  EXPECT_EQ(component("archive.tar.gz"), h("archive.tar") + ".gz");
  EXPECT_EQ(component("report.markdown"), h("report") + ".markdown");
  EXPECT_EQ(component("report.markdownx"), h("report.markdownx"));
  EXPECT_EQ(component("v1.2.3"), h("v1.2.3"));
  for (const char* name : {"notes", "notes.txt", "a.b1", "report.markdownx"})
    EXPECT_TRUE(state.privateNames.contains(name)) << name;
}

TEST_F(RulesTest, LastComponentIsKeptUnlessAlreadyPrivate) {
  EXPECT_EQ(path("/Users/ann/tools/mytool", true), "~/" + h("tools") + "/mytool");
  EXPECT_EQ(path("/Users/ann/shop/bin/shop", true), "~/" + h("shop") + "/bin/" + h("shop"));
  EXPECT_EQ(Anonymizer("/Users/ann", "s").anonymize("/Users/ann/shop/bin/shop"),
            "~/" + h("shop") + "/bin/" + h("shop"));
}

TEST_F(RulesTest, SecretsAfterTokenOptionsAreHiddenInOneArgumentOrTheNext) {
  EXPECT_EQ(arguments({"--api-key=VALUE", "--verbose"}), (std::vector<std::string>{"--api-key=" + h("VALUE"), "--verbose"}));
  EXPECT_EQ(arguments({"--password", "hunter2", "hunter2"}),
            (std::vector<std::string>{"--password", h("hunter2"), "hunter2"}));
  // Empty words between separators stay and do not use up the secret.
  EXPECT_EQ(arguments({"--Auth-Token=,VALUE"}), (std::vector<std::string>{"--Auth-Token=," + h("VALUE")}));
  EXPECT_EQ(arguments({"a,,b", ";;", "x= 'y'"}), (std::vector<std::string>{"a,,b", ";;", "x= 'y'"}));
}

TEST_F(RulesTest, TokenLikeWordsNeedLettersAndDigitsAndTwentyCharacters) {
  const std::string token = "a1b2c3d4e5f6a7b8c9d0e1f2a3b4c5d6";
  const std::string word = "abcdefghijklmnopqrstuvwxyzabcdef";
  EXPECT_EQ(arguments({token, word}), (std::vector<std::string>{h(token), word}));
  EXPECT_EQ(arguments({"abcdefghijklmnopqrs1", "abcdefghijklmnopqr1"}),
            (std::vector<std::string>{h("abcdefghijklmnopqrs1"), "abcdefghijklmnopqr1"}));
}

TEST_F(RulesTest, AddressesHideUserAndRemoteHost) {
  EXPECT_EQ(arguments({"ann@github", "ann@localhost", "ann@127.0.0.1", "--to=ann@build.example.com"}),
            (std::vector<std::string>{h("ann") + "@" + h("github"), h("ann") + "@localhost",
                                      h("ann") + "@127.0.0.1",
                                      "--to=" + h("ann") + "@" + h("build.example.com")}));
}

TEST_F(RulesTest, WordsKnownPrivateArePathsOrHashesEverywhere) {
  component("shop");
  EXPECT_EQ(arguments({"sh -c 'cd shop && npm start'", "--config=./shop/app.json", "~/shop"}),
            (std::vector<std::string>{"sh -c 'cd " + h("shop") + " && npm start'",
                                      "--config=./" + h("shop") + "/" + h("app") + ".json",
                                      "~/" + h("shop")}));
}

}  // namespace
}  // namespace corvane
