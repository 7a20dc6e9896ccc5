#include "cli/json_output.h"

namespace corvane {

std::string encodeJSON(const nlohmann::json& value) {
  std::string text;
  try {
    text = value.dump(2);
  } catch (const nlohmann::json::exception&) {
    return {};
  }
  // A "/" can only stand inside a string in JSON text, so escaping every one is safe.
  std::string escaped;
  escaped.reserve(text.size() + text.size() / 16);
  for (char c : text) {
    if (c == '/') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

}  // namespace corvane
