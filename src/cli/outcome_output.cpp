#include "cli/outcome_output.h"

#include "base/json_text.h"

namespace corvane {

std::string outcomesJSON(const std::vector<Outcome>& outcomes) {
  nlohmann::json array = nlohmann::json::array();
  for (const Outcome& outcome : outcomes) array.push_back(toJSON(outcome));
  return encodeJSON(array) + "\n";
}

std::string outcomesText(const std::vector<Outcome>& outcomes) {
  std::string text;
  for (const std::string& line : outcomeLines(outcomes, Audience::commandLine)) text += line + "\n";
  return text;
}

}  // namespace corvane
