#include "cli/status_report.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

Item row(std::string id, Item::Kind kind, std::string title, uint64_t memory,
         std::optional<std::string> project = std::nullopt) {
  return {.id = id, .key = id, .kind = kind, .title = std::move(title), .project = std::move(project),
          .pids = {1}, .memory = memory, .stop = Stop::signal()};
}

TEST(StatusReportTest, RowLineColumnsMarksAndTitlesFilling34UTF16Units) {
  Item next = row("server:4121", Item::Kind::server, "Next.js :3000", 1'200'000'000);
  next.startedBy = "Claude Code";
  next.pids = {4121, 4122, 4123};
  EXPECT_EQ(rowLine(next, false),
            "  Next.js :3000                        1.2 GB  server \xC2\xB7 started by Claude Code \xC2\xB7 3 proc "
            "\xC2\xB7 server:4121");

  Item engine = row("docker:OrbStack", Item::Kind::docker, std::string(40, 'x'), 1'234'500'000'000ULL);
  engine.stop.reset();
  engine.guarded = true;
  engine.startedBy = "iTerm";
  EXPECT_EQ(rowLine(engine, true), "  " + std::string(34, 'x') + " 1234.5 GB  docker \xC2\xB7 started by iTerm "
                                   "\xC2\xB7 pinned \xC2\xB7 guarded \xC2\xB7 not stoppable \xC2\xB7 1 proc \xC2\xB7 "
                                   "docker:OrbStack");

  const std::pair<std::string, std::string> cases[] = {
      // A two-byte middle dot is one unit.
      {"Xcode Previews \xC2\xB7 iPhone 16 Pro Max Ultra", "Xcode Previews \xC2\xB7 iPhone 16 Pro Max"},
      // An emoji takes two units and is never split: a blank takes the place of its half.
      {std::string(33, 'a') + "\xF0\x9F\x9A\x80", std::string(33, 'a') + " "},
      // A combining mark is a unit of its own, also in the padding.
      {"e\xCC\x81" "cole", "e\xCC\x81" "cole" + std::string(28, ' ')},
  };
  for (const auto& [title, field] : cases)
    EXPECT_EQ(rowLine(row("x", Item::Kind::server, title, 0), false).substr(0, field.size() + 13),
              "  " + field + "   0.0 GB  ")
        << title;
}

// The report's body after its first line: "|heading:" for a group, "." for each row under it.
std::string outline(const std::string& text) {
  std::string outline;
  for (size_t pos = text.find("\n\n") + 2; pos < text.size();) {
    const size_t end = text.find('\n', pos);
    outline += text[pos] == ' ' ? "." : "|" + text.substr(pos, end - pos) + ":";
    pos = end + 1;
  }
  return outline;
}

TEST(StatusReportTest, GroupsSortedByComposedNameRowsByMemoryStable) {
  const Item zed = row("a", Item::Kind::server, "A", 5, "Zed");
  const Item api1 = row("b", Item::Kind::server, "B", 1'000'000'000, "api");
  const Item api2 = row("c", Item::Kind::tunnel, "C", 3'000'000'000, "api");
  const Item api3 = row("d", Item::Kind::server, "D", 1'000'000'000, "api");
  const Item db = row("e", Item::Kind::database, "Redis :6379", 7);
  Item container = row("f", Item::Kind::container, "web-1", 2'000'000'000, "Docker");
  container.counted = false;
  const Item engine = row("g", Item::Kind::docker, "Docker Engine", 100'000'000);
  std::vector<Item> items = {zed, api1, api2, api3, db, container, engine, row("h", Item::Kind::simulator, "S", 0)};
  // In scan order; "école" once with a combining accent, once with U+00E9; 한 once as jamo.
  for (const char* project : {"shop-web", "e\xCC\x81" "cole", "caf\xC3\xA9", "fox", "\xC3\xA9" "cole",
                              "\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB", "\xED\x95\x9C"})
    items.push_back(row("server:" + std::to_string(items.size()), Item::Kind::server, "S", 1, project));

  std::string text = statusText(items, {}, Pressure::warning, 2'500'000'000, 0.4129);
  // A group's heading is spelt as its first row's project.
  EXPECT_EQ(outline(text), "|Databases:.|Docker:..|Simulators:.|Zed:.|api:...|caf\xC3\xA9:.|fox:.|shop-web:.|"
                           "e\xCC\x81" "cole:..|\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB:..");
  EXPECT_EQ(text.substr(0, text.find('\n')),
            "Dev stack 5.1 GB \xC2\xB7 pressure warning \xC2\xB7 swap 2.5 GB \xC2\xB7 scanned in 412 ms");
  EXPECT_LT(text.find("  C "), text.find("  B "));
  EXPECT_LT(text.find("  B "), text.find("  D "));
  EXPECT_LT(text.find("  web-1"), text.find("  Docker Engine"));
}

}  // namespace
}  // namespace corvane
