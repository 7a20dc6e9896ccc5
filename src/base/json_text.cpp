#include "base/json_text.h"

namespace corvane {

namespace {

std::optional<std::string> encode(const nlohmann::json& value, int indent, Slashes slashes) {
  std::string text;
  try {
    text = value.dump(indent);
  } catch (const nlohmann::json::exception&) {
    return std::nullopt;
  }
  if (slashes == Slashes::plain) return text;
  // A "/" can only stand inside a string in JSON text, so escaping every one is safe.
  std::string escaped;
  escaped.reserve(text.size() + text.size() / 16);
  for (char c : text) {
    if (c == '/') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

}  // namespace

std::optional<std::string> encodeCompactJSON(const nlohmann::json& value, Slashes slashes) {
  return encode(value, -1, slashes);
}

std::string encodeJSON(const nlohmann::json& value) {
  return encode(value, 2, Slashes::escaped).value_or(std::string());
}

}  // namespace corvane
