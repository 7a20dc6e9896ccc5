#pragma once
// How `stop` and `free` print their outcomes.
#include <string>
#include <vector>

#include "stop/outcome.h"

namespace corvane {

// The JSON array of the outcomes and a line feed.
std::string outcomesJSON(const std::vector<Outcome>& outcomes);
// The command line's outcome lines (with the "Freed" line when it applies), each ending in a line feed.
std::string outcomesText(const std::vector<Outcome>& outcomes);

}  // namespace corvane
