#include "scanner/json_lines.h"

#include "base/lines.h"
#include "base/utf8.h"

namespace corvane {

std::vector<nlohmann::json> parseJSONLines(std::string_view bytes) {
  const std::string text = repairedUTF8(bytes);
  std::vector<nlohmann::json> objects;
  for (const std::string_view line : splitLines(text)) {
    if (line.empty()) continue;
    auto value = nlohmann::json::parse(line.begin(), line.end(), nullptr, false);
    if (value.is_object()) objects.push_back(std::move(value));
  }
  return objects;
}

}  // namespace corvane
