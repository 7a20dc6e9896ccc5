#pragma once
// Points in time as the records carry them: microseconds since 1970, the resolution the kernel gives
// process start times, so that a start time read twice compares equal.
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

using Date = std::chrono::sys_time<std::chrono::microseconds>;

Date now();
Date dateFromSeconds(double secondsSince1970);
double secondsSince1970(Date date);
double secondsBetween(Date from, Date to);

// "2026-03-01T09:15:00Z", with ".123456" (trailing zeros dropped) when the date has a fraction.
std::string iso8601(Date date);
// "2026-03-01T09:15:00Z" always: the fraction is dropped, as the platform's ISO 8601 encoder drops it,
// so that readers decoding with that encoder's counterpart accept the text.
std::string iso8601WholeSeconds(Date date);
// Accepts a fraction of any length and "Z", "+HH:MM", "+HHMM" or "+HH" as the offset.
std::optional<Date> parseISO8601(std::string_view text);

// 2001-01-01 00:00:00 UTC in seconds since 1970: the epoch of the desktop app's dates and of property lists.
inline constexpr int64_t referenceDateSince1970 = 978307200;

// The desktop app's dates: seconds since 2001-01-01 00:00:00 UTC. Absent for a number a Date can't
// hold (about 292,000 years either side of 1970, and neither infinite nor NaN).
double secondsSinceReferenceDate(Date date);
std::optional<Date> dateFromReferenceSeconds(double seconds);

}  // namespace corvane
