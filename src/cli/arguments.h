#pragma once
// The command-line grammar: what an argument vector asks for, decided without side effects.
#include <optional>
#include <string>
#include <vector>

namespace corvane {

struct Invocation {
  enum class Action {
    help,           // usage text on stdout, exit 0
    usage,          // usage text on stderr, exit 64
    badGigabytes,   // the gigabytes message on stderr, exit 64
    status,
    stop,
    free,
    mcp,
  };

  Action action = Action::usage;
  bool json = false;
  bool yes = false;
  bool force = false;
  bool dryRun = false;
  std::string target;     // stop
  double gigabytes = 0;   // free
};

// `arguments` excludes the program path.
Invocation parseArguments(const std::vector<std::string>& arguments);

// The free command's value: strtod in the C locale consuming the whole text, 0 < value < 1024,
// no leading whitespace.
std::optional<double> parseGigabytes(const std::string& text);

}  // namespace corvane
