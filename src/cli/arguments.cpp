#include "cli/arguments.h"

#include <array>
#include <clocale>
#include <cstdlib>
#include <locale.h>
#include <set>
#include <string_view>

namespace corvane {

namespace {

struct CommandRow {
  std::string_view name;
  size_t positionals;  // the command word included
  std::vector<std::string_view> options;
};

const std::array<CommandRow, 4>& commands() {
  static const std::array<CommandRow, 4> table = {{
      {"status", 1, {"--json"}},
      {"stop", 2, {"--yes", "--force", "--dry-run", "--json"}},
      {"free", 2, {"--dry-run", "--json"}},
      {"mcp", 1, {}},
  }};
  return table;
}

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }

// strtod honours the process locale; the grammar wants the C locale whatever the user's is.
double strtodC(const char* text, char** end) {
  static locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
  if (!cLocale) return std::strtod(text, end);
  return strtod_l(text, end, cLocale);
}

}  // namespace

std::optional<double> parseGigabytes(const std::string& text) {
  if (text.empty() || isSpace(text[0])) return std::nullopt;
  char* end = nullptr;
  double value = strtodC(text.c_str(), &end);
  if (end != text.c_str() + text.size()) return std::nullopt;
  if (!(value > 0) || !(value < 1024)) return std::nullopt;
  return value;
}

Invocation parseArguments(const std::vector<std::string>& arguments) {
  Invocation invocation;
  std::vector<std::string> positionals;
  std::set<std::string> options;
  for (const auto& a : arguments) {
    if (!a.empty() && a[0] == '-')
      options.insert(a);
    else
      positionals.push_back(a);
  }

  if (arguments.empty() || options.count("--help") || options.count("-h") ||
      (positionals.size() == 1 && positionals[0] == "help")) {
    invocation.action = Invocation::Action::help;
    return invocation;
  }

  invocation.action = Invocation::Action::usage;
  if (positionals.empty()) return invocation;
  const CommandRow* row = nullptr;
  for (const auto& c : commands())
    if (c.name == positionals[0]) row = &c;
  if (!row || positionals.size() != row->positionals) return invocation;
  for (const auto& o : options) {
    bool allowed = false;
    for (auto a : row->options) allowed = allowed || a == o;
    if (!allowed) return invocation;
  }

  invocation.json = options.count("--json") > 0;
  invocation.yes = options.count("--yes") > 0;
  invocation.force = options.count("--force") > 0;
  invocation.dryRun = options.count("--dry-run") > 0;
  if (row->name == "status") {
    invocation.action = Invocation::Action::status;
  } else if (row->name == "stop") {
    invocation.action = Invocation::Action::stop;
    invocation.target = positionals[1];
  } else if (row->name == "free") {
    auto gigabytes = parseGigabytes(positionals[1]);
    if (!gigabytes) {
      invocation.action = Invocation::Action::badGigabytes;
      return invocation;
    }
    invocation.action = Invocation::Action::free;
    invocation.gigabytes = *gigabytes;
  } else {
    invocation.action = Invocation::Action::mcp;
  }
  return invocation;
}

}  // namespace corvane
