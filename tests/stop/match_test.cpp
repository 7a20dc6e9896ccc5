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

TEST(MatchTest, ProjectsMatchIgnoringCaseAndHowAccentsAreSpelt) {
  struct Case {
    const char* target;
    const char* project;
    bool matches;
  };
  const Case cases[] = {
      {"MyApp", "myapp", true},
      {"\xD5\xA1PP", "\xD4\xB1pp", true},                                // Armenian ա / Ա
      {"STRASSE", "stra\xC3\x9F" "e", true},                             // ß folds to "ss"
      {"\xC3\xA9" "cole", "e\xCC\x81" "cole", true},                      // é typed, e + U+0301 on disk
      {"\xC3\x89" "COLE", "e\xCC\x81" "cole", true},                      // and in capitals
      {"\xCE\xA3\xCE\x9F\xCE\xA6\xCE\x99\xCE\x91\xCE\xA3",               // ΣΟΦΙΑΣ
       "\xCF\x83\xCE\xBF\xCF\x86\xCE\xB9\xCE\xB1\xCF\x82", true},         // σοφιας, final sigma
      {"\xED\x95\x9C", "\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB", true},       // 한 against its jamo
      {"\xD0\x9F\xD0\xA0\xD0\x9E\xD0\x95\xD0\x9A\xD0\xA2",                         // ПРОЕКТ
       "\xD0\xBF\xD1\x80\xD0\xBE\xD0\xB5\xD0\xBA\xD1\x82", true},
      {"\xC3\x97", "\xC3\xB7", false},                                  // × is not ÷
      {"e", "e\xCC\x81", false},                                        // an accent is not case
      {"\xEF\xAC\x80", "FF", true},                                      // the ligature ﬀ folds to "ff"
      {"\xC3\x85", "\xE2\x84\xAB", true},                                // Å and the Angstrom sign
      {"\xC3", "\xE3", true},  // ill-formed bytes read as U+FFFD on both sides, as records hold them
  };
  for (const Case& c : cases) {
    const Match m = match(c.target, {{.id = "server:1", .project = c.project}});
    EXPECT_EQ(m.items.size(), c.matches ? 1u : 0u) << c.target << " / " << c.project;
  }
}

}  // namespace
}  // namespace corvane
