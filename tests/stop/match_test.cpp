#include "stop/match.h"

#include <gtest/gtest.h>

#include "stop/case_fold.h"

namespace corvane {
namespace {

Item row(std::string id, std::vector<uint16_t> ports, std::optional<std::string> project) {
  Item item;
  item.id = std::move(id);
  item.ports = std::move(ports);
  item.project = std::move(project);
  return item;
}

std::vector<std::string> ids(const Match& m) {
  std::vector<std::string> result;
  for (const Item& item : m.items) result.push_back(item.id);
  return result;
}

const std::vector<Item> scan = {
    row("db:10", {5432}, "myapp"),
    row("server:20", {3000, 3001}, "myapp"),
    row("server:30", {3000}, "other"),
    row("3001", {}, "other"),
    row("server:40", {}, "70000"),
};

TEST(MatchTest, PortSpellingsPickTheFirstListener) {
  for (const char* target : {"3000", ":3000", "+3000", ":+3000", "03000"}) {
    const Match m = match(target, scan);
    EXPECT_EQ(ids(m), std::vector<std::string>{"server:20"}) << target;
    EXPECT_TRUE(m.byIdOrPort) << target;
  }
  for (const char* target : {"::3000", "+-3000", " 3000", "3000 ", "+", ":", "", "3000a", "++3000", "99999999999"})
    EXPECT_FALSE(portOfTarget(target)) << target;
  EXPECT_EQ(portOfTarget("65535"), 65535);
  EXPECT_EQ(portOfTarget("0"), 0);
  EXPECT_FALSE(portOfTarget("65536"));
}

TEST(MatchTest, IdWinsOverPortAndOutOfRangeIsAProject) {
  EXPECT_EQ(ids(match("3001", scan)), std::vector<std::string>{"3001"});
  EXPECT_EQ(ids(match("db:10", scan)), std::vector<std::string>{"db:10"});
  EXPECT_TRUE(ids(match("DB:10", scan)).empty());  // ids are case-sensitive

  const Match m = match("70000", scan);
  EXPECT_EQ(ids(m), std::vector<std::string>{"server:40"});
  EXPECT_FALSE(m.byIdOrPort);
}

TEST(MatchTest, ProjectIgnoresCaseButKeepsTheColon) {
  const Match m = match("MyApp", scan);
  EXPECT_EQ(ids(m), (std::vector<std::string>{"db:10", "server:20"}));
  EXPECT_FALSE(m.byIdOrPort);
  EXPECT_TRUE(match(":myapp", scan).items.empty());
  EXPECT_TRUE(match("myap", scan).items.empty());
  EXPECT_TRUE(match("4000", scan).items.empty());
}

TEST(MatchTest, CaseFoldingBeyondASCII) {
  EXPECT_TRUE(equalIgnoringCase("ÉCOLE-Ödön", "école-ödön"));
  EXPECT_TRUE(equalIgnoringCase("ПРОЕКТ", "проект"));
  EXPECT_TRUE(equalIgnoringCase("ΣΟΦΙΑ", "σοφια"));
  EXPECT_TRUE(equalIgnoringCase("Łódź", "ŁÓDŹ"));
  EXPECT_FALSE(equalIgnoringCase("×", "÷"));
  EXPECT_FALSE(equalIgnoringCase("app", "apps"));
  EXPECT_FALSE(equalIgnoringCase("\xC3", "\xE3"));
}

}  // namespace
}  // namespace corvane
