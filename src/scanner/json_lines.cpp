#include "scanner/json_lines.h"

#include "snapshot/utf8.h"

namespace corvane {

std::vector<nlohmann::json> parseJSONLines(std::string_view bytes) {
  const std::string text = repairedUTF8(bytes);
  std::vector<nlohmann::json> objects;
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    if (end > start) {
      auto value = nlohmann::json::parse(text.begin() + static_cast<std::ptrdiff_t>(start),
                                         text.begin() + static_cast<std::ptrdiff_t>(end), nullptr, false);
      if (value.is_object()) objects.push_back(std::move(value));
    }
    start = end + 1;
  }
  return objects;
}

}  // namespace corvane
