#include "scanner/memory_size.h"

#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <string>

namespace corvane {

namespace {

struct Unit {
  std::string_view suffix;
  double factor;
};

// Tried in this order, so that "KiB" is not read as "B" and "kB" not as "B".
constexpr std::array<Unit, 9> units = {{
    {"KiB", 1024.0},
    {"MiB", 1048576.0},
    {"GiB", 1073741824.0},
    {"TiB", 1099511627776.0},
    {"kB", 1e3},
    {"MB", 1e6},
    {"GB", 1e9},
    {"TB", 1e12},
    {"B", 1.0},
}};

std::string_view trimSpacesAndTabs(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// The whole text as a decimal number, or 0. strtod would skip leading white space; a number
// must start right away.
double parseNumber(std::string_view text) {
  if (text.empty() || std::isspace(static_cast<unsigned char>(text.front()))) return 0;
  const std::string copy(text);
  char* end = nullptr;
  const double value = std::strtod(copy.c_str(), &end);
  return end == copy.c_str() + copy.size() ? value : 0;
}

}  // namespace

uint64_t parseMemorySize(std::string_view text) {
  const std::string_view trimmedText = trimSpacesAndTabs(text);
  for (const Unit& unit : units) {
    if (!trimmedText.ends_with(unit.suffix)) continue;
    const double bytes = parseNumber(trimmedText.substr(0, trimmedText.size() - unit.suffix.size())) * unit.factor;
    if (!std::isfinite(bytes) || bytes <= 0) return 0;
    if (bytes >= 18446744073709551616.0) return UINT64_MAX;
    return static_cast<uint64_t>(bytes);
  }
  return 0;
}

}  // namespace corvane
