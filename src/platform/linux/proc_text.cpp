#include "platform/linux/proc_text.h"

#include <charconv>

#include "base/lines.h"

namespace corvane::platform::linux_proc {

namespace {

template <class Number>
std::optional<Number> number(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end == text.data()) return std::nullopt;
  return value;
}

std::string_view skipBlanks(std::string_view text) {
  size_t start = text.find_first_not_of(" \t");
  return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

// The value of a "Key:<blanks>number" line, where `rest` is what follows the colon.
uint64_t leadingNumber(std::string_view rest) { return number<uint64_t>(skipBlanks(rest)).value_or(0); }

}  // namespace

std::optional<StatFields> parseStat(std::string_view text) {
  const size_t close = text.rfind(')');
  if (close == std::string_view::npos) return std::nullopt;
  // Fields after the name: index 0 is field 3 (state), so field n sits at index n - 3.
  std::string_view fields[20];
  const size_t count = splitFields(text.substr(close + 1), " \n", fields);
  if (count < 20 || fields[0].size() != 1) return std::nullopt;
  StatFields stat;
  stat.state = fields[0][0];
  const auto ppid = number<int32_t>(fields[4 - 3]);
  const auto utime = number<uint64_t>(fields[14 - 3]);
  const auto stime = number<uint64_t>(fields[15 - 3]);
  const auto starttime = number<uint64_t>(fields[22 - 3]);
  if (!ppid || !utime || !stime || !starttime) return std::nullopt;
  stat.ppid = *ppid;
  stat.utime = *utime;
  stat.stime = *stime;
  stat.starttime = *starttime;
  return stat;
}

StatusFields parseStatus(std::string_view text) {
  StatusFields status;
  for (const std::string_view line : splitLines(text)) {
    const size_t colon = line.find(':');
    if (colon == std::string_view::npos) continue;
    const std::string_view key = line.substr(0, colon);
    const std::string_view rest = line.substr(colon + 1);
    if (key == "Name") {
      status.name = std::string(skipBlanks(rest));
    } else if (key == "Uid") {
      status.realUid = number<uint32_t>(skipBlanks(rest));
    } else if (key == "RssAnon") {
      status.rssAnonKB = leadingNumber(rest);
    } else if (key == "VmSwap") {
      status.vmSwapKB = leadingNumber(rest);
      break;  // the last of the lines we need
    }
  }
  return status;
}

std::vector<std::string> splitAtNul(std::string_view bytes) {
  std::vector<std::string> strings;
  size_t at = 0;
  while (at < bytes.size()) {
    size_t end = bytes.find('\0', at);
    if (end == std::string_view::npos) end = bytes.size();
    strings.emplace_back(bytes.substr(at, end - at));
    at = end + 1;
  }
  while (!strings.empty() && strings.back().empty()) strings.pop_back();
  return strings;
}

std::string_view withoutDeletedMark(std::string_view link) {
  constexpr std::string_view mark = " (deleted)";
  if (link.size() > mark.size() && link.substr(link.size() - mark.size()) == mark)
    return link.substr(0, link.size() - mark.size());
  return link;
}

std::optional<uint64_t> socketInode(std::string_view link) {
  constexpr std::string_view prefix = "socket:[";
  if (link.size() <= prefix.size() + 1 || link.substr(0, prefix.size()) != prefix || link.back() != ']')
    return std::nullopt;
  const std::string_view digits = link.substr(prefix.size(), link.size() - prefix.size() - 1);
  uint64_t inode = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), inode);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return inode;
}

std::optional<int64_t> bootTime(std::string_view procStat) {
  for (const std::string_view line : splitLines(procStat))
    if (line.substr(0, 6) == "btime ") return number<int64_t>(skipBlanks(line.substr(6)));
  return std::nullopt;
}

}  // namespace corvane::platform::linux_proc
