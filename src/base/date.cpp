#include "base/date.h"

#include <cmath>
#include <cstdio>

namespace corvane {

namespace {

bool readDigits(std::string_view text, size_t& pos, size_t count, int& value) {
  if (pos + count > text.size()) return false;
  value = 0;
  for (size_t i = 0; i < count; ++i) {
    char c = text[pos + i];
    if (c < '0' || c > '9') return false;
    value = value * 10 + (c - '0');
  }
  pos += count;
  return true;
}

bool expect(std::string_view text, size_t& pos, char c) {
  if (pos >= text.size() || text[pos] != c) return false;
  ++pos;
  return true;
}

}  // namespace

Date now() {
  return std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now());
}

Date dateFromSeconds(double seconds) {
  return Date{std::chrono::microseconds{static_cast<int64_t>(std::llround(seconds * 1e6))}};
}

double secondsSince1970(Date date) {
  return static_cast<double>(date.time_since_epoch().count()) / 1e6;
}

double secondsBetween(Date from, Date to) {
  return static_cast<double>((to - from).count()) / 1e6;
}

std::string iso8601(Date date) {
  using namespace std::chrono;
  auto day = floor<days>(date);
  year_month_day ymd{day};
  hh_mm_ss<microseconds> time{date - day};
  char buffer[64];
  int n = std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(ymd.year()),
                        static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                        static_cast<int>(time.seconds().count()));
  std::string text(buffer, static_cast<size_t>(n));
  auto micros = time.subseconds().count();
  if (micros != 0) {
    std::snprintf(buffer, sizeof buffer, ".%06lld", static_cast<long long>(micros));
    std::string fraction(buffer);
    while (fraction.back() == '0') fraction.pop_back();
    text += fraction;
  }
  return text + "Z";
}

std::string iso8601WholeSeconds(Date date) {
  return iso8601(std::chrono::floor<std::chrono::seconds>(date));
}

std::optional<Date> parseISO8601(std::string_view text) {
  using namespace std::chrono;
  size_t pos = 0;
  int y, mo, d, h, mi, s;
  if (!readDigits(text, pos, 4, y) || !expect(text, pos, '-') || !readDigits(text, pos, 2, mo) ||
      !expect(text, pos, '-') || !readDigits(text, pos, 2, d) || !expect(text, pos, 'T') ||
      !readDigits(text, pos, 2, h) || !expect(text, pos, ':') || !readDigits(text, pos, 2, mi) ||
      !expect(text, pos, ':') || !readDigits(text, pos, 2, s))
    return std::nullopt;
  year_month_day ymd{year{y}, month{static_cast<unsigned>(mo)}, day{static_cast<unsigned>(d)}};
  if (!ymd.ok() || h > 23 || mi > 59 || s > 60) return std::nullopt;
  int64_t micros = 0;
  if (pos < text.size() && text[pos] == '.') {
    ++pos;
    int64_t scale = 100000;
    size_t start = pos;
    while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
      micros += (text[pos] - '0') * scale;
      scale /= 10;
      ++pos;
    }
    if (pos == start) return std::nullopt;
  }
  int64_t offsetSeconds = 0;
  if (pos < text.size() && text[pos] == 'Z') {
    ++pos;
  } else if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) {
    int sign = text[pos] == '-' ? -1 : 1;
    ++pos;
    int oh = 0, om = 0;
    if (!readDigits(text, pos, 2, oh)) return std::nullopt;
    if (pos < text.size() && text[pos] == ':') ++pos;
    if (pos < text.size() && !readDigits(text, pos, 2, om)) return std::nullopt;
    offsetSeconds = sign * (oh * 3600 + om * 60);
  } else {
    return std::nullopt;
  }
  if (pos != text.size()) return std::nullopt;
  auto base = sys_days{ymd} + hours{h} + minutes{mi} + seconds{s} - seconds{offsetSeconds};
  return Date{duration_cast<microseconds>(base.time_since_epoch()) + microseconds{micros}};
}

double secondsSinceReferenceDate(Date date) {
  return secondsSince1970(date) - static_cast<double>(referenceDateSince1970);
}

std::optional<Date> dateFromReferenceSeconds(double seconds) {
  const double micros = std::round((seconds + static_cast<double>(referenceDateSince1970)) * 1e6);
  // 2^63: every double strictly inside converts to a 64-bit count; NaN fails both comparisons.
  constexpr double limit = 9223372036854775808.0;
  if (!(micros > -limit && micros < limit)) return std::nullopt;
  return Date{std::chrono::microseconds{static_cast<int64_t>(micros)}};
}

}  // namespace corvane
