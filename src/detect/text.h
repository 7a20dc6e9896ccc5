#pragma once
// Small text tests the classifiers share, on views so that no process record is copied.
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

inline bool contains(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

// The arguments joined by single blanks, into a buffer the caller reuses.
inline const std::string& joinArgs(const std::vector<std::string>& args, std::string& buffer) {
  buffer.clear();
  for (size_t i = 0; i < args.size(); ++i) {
    if (i > 0) buffer += ' ';
    buffer += args[i];
  }
  return buffer;
}

}  // namespace corvane
