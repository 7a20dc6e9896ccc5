#include "base/lines.h"

namespace corvane {

std::vector<std::string_view> splitLines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    if (end == std::string_view::npos) {
      lines.push_back(text);
      break;
    }
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return lines;
}

size_t splitFields(std::string_view text, std::string_view blanks, std::span<std::string_view> fields) {
  size_t count = 0;
  size_t at = 0;
  while (count < fields.size()) {
    at = text.find_first_not_of(blanks, at);
    if (at == std::string_view::npos) break;
    size_t end = text.find_first_of(blanks, at);
    if (end == std::string_view::npos) end = text.size();
    fields[count++] = text.substr(at, end - at);
    at = end;
  }
  return count;
}

}  // namespace corvane
