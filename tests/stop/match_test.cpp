#include "stop/match.h"

#include <gtest/gtest.h>

#include "stop/case_fold.h"

namespace corvane {
namespace {

std::vector<std::string> ids(const std::string& target, bool byIdOrPort) {
  static const std::vector<Item> scan = {
      {.id = "db:10", .project = "myapp", .ports = {5432}},  {.id = "server:20", .project = "myapp", .ports = {3000}},
      {.id = "server:30", .project = "web", .ports = {3000}}, {.id = "3001", .project = "web"},
      {.id = "server:40", .project = "70000", .ports = {3001}},
  };
  const Match m = match(target, scan);
  std::vector<std::string> result;
  for (const Item& item : m.items) result.push_back(item.id);
  if (!result.empty()) EXPECT_EQ(m.byIdOrPort, byIdOrPort) << target;
  return result;
}

using Ids = std::vector<std::string>;

TEST(MatchTest, IdThenPortThenProject) {
  for (const char* port : {"3000", ":3000", "+3000", ":+3000", "03000"}) EXPECT_EQ(ids(port, true), Ids{"server:20"});
  EXPECT_EQ(ids("3001", true), Ids{"3001"});  // the id wins over server:40's port
  EXPECT_EQ(ids("70000", false), Ids{"server:40"});
  EXPECT_EQ(ids("MyApp", false), (Ids{"db:10", "server:20"}));
  for (const char* none : {":myapp", "DB:10", "4000", "myap", " 3000", "::3000", "+-3000", "+"})
    EXPECT_TRUE(ids(none, false).empty()) << none;
  EXPECT_EQ(portOfTarget("65535"), 65535);
  EXPECT_FALSE(portOfTarget("65536"));
  EXPECT_FALSE(portOfTarget("99999999999999999999"));
}

TEST(MatchTest, ProjectCaseFoldsBeyondASCII) {
  EXPECT_TRUE(equalIgnoringCase("ÉCOLE-Łódź ПРОЕКТ ΣΟΦΙΑ", "école-łÓdŹ проект σοφια"));
  EXPECT_FALSE(equalIgnoringCase("×", "÷"));
  EXPECT_FALSE(equalIgnoringCase("\xC3", "\xE3"));
}

}  // namespace
}  // namespace corvane
