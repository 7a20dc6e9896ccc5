#include "anonymize/tables.h"

#include <string>
#include <unordered_set>
#include <vector>

#include "detect/tables.h"
#include "snapshot/unicode.h"

namespace corvane {
namespace {

constexpr bool allDistinctAndNonEmpty() {
  for (size_t i = 0; i < fixedPublicNames.size(); ++i) {
    if (fixedPublicNames[i].empty()) return false;
    for (size_t j = i + 1; j < fixedPublicNames.size(); ++j)
      if (fixedPublicNames[i] == fixedPublicNames[j]) return false;
  }
  return true;
}
// A missing entry would leave an empty one at the end of the array rather than fail to compile.
static_assert(allDistinctAndNonEmpty());

// Agents keep their names with the extensions their packages give them ("claude.exe"), which detection
// reads too; the set's views point into this list, which is made once and never changes.
const std::vector<std::string>& agentFileNames() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> list;
    for (const auto& [process, display] : agentNames)
      for (const char* extension : {".exe", ".js"}) list.push_back(std::string(process) + extension);
    return list;
  }();
  return names;
}

std::unordered_set<std::string_view> buildPublicNames() {
  std::unordered_set<std::string_view> names(fixedPublicNames.begin(), fixedPublicNames.end());
  for (const auto& [process, display] : agentNames) names.insert(process);
  names.insert(agentFileNames().begin(), agentFileNames().end());
  for (const auto& [process, display] : databaseNames) names.insert(process);
  // Django's and Laravel's words are commands of a project's own script ("manage.py runserver",
  // "artisan serve"), and the script's folder may say whose project it is: they stay hidden.
  for (const auto& [word, display] : serverNames)
    if (word != "runserver" && word != "artisan") names.insert(word);
  return names;
}

}  // namespace

bool isPublicName(std::string_view component) {
  static const std::unordered_set<std::string_view> names = buildPublicNames();
  return names.contains(component);
}

bool isWordSeparator(std::string_view character) {
  if (character.size() == 1 && wordSeparators.find(character.front()) != std::string_view::npos) return true;
  return isWhiteSpace(character);
}

}  // namespace corvane
