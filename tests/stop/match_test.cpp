#include "stop/match.h"

#include <gtest/gtest.h>

#include "snapshot/unicode.h"

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
  if (!result.empty()) {
    EXPECT_EQ(m.byIdOrPort, byIdOrPort) << target;
  }
  return result;
}

using Ids = std::vector<std::string>;

TEST(MatchTest, IdThenPortThenProjectIgnoringCaseAndHowAccentsAreSpelt) {
  for (const char* port : {"3000", ":3000", "+3000", ":+3000", "03000"}) EXPECT_EQ(ids(port, true), Ids{"server:20"});
  EXPECT_EQ(ids("3001", true), Ids{"3001"});  // the id wins over server:40's port
  EXPECT_EQ(ids("70000", false), Ids{"server:40"});
  EXPECT_EQ(ids("MyApp", false), (Ids{"db:10", "server:20"}));
  for (const char* none : {":myapp", "DB:10", "4000", "myap", " 3000", "::3000", "+-3000", "+"})
    EXPECT_TRUE(ids(none, false).empty()) << none;
  EXPECT_EQ(portOfTarget("65535"), 65535);
  EXPECT_FALSE(portOfTarget("65536"));
  EXPECT_FALSE(portOfTarget("99999999999999999999"));

  struct Case {
    const char* target;
    const char* project;
    bool matches;
  };
  const Case cases[] = {
      {"STRASSE", "stra\xC3\x9F" "e", true},                             // ß folds to "ss"
      {"\xC3\xA9" "cole", "e\xCC\x81" "cole", true},                      // é typed, e + U+0301 on disk
      {"\xC3\x89" "COLE", "e\xCC\x81" "cole", true},                      // and in capitals
      {"\xC3\x97", "\xC3\xB7", false},                                  // × is not ÷
      {"e", "e\xCC\x81", false},                                        // an accent is not case
      {"\xC3", "\xE3", true},  // ill-formed bytes read as U+FFFD on both sides, as records hold them
  };
  for (const Case& c : cases) {
    const Match m = match(c.target, {{.id = "server:1", .project = c.project}});
    EXPECT_EQ(m.items.size(), c.matches ? 1u : 0u) << c.target << " / " << c.project;
  }
}

}  // namespace
}  // namespace corvane
