#include "activity/activity_log.h"

#include <filesystem>
#include <optional>
#include <string_view>

#include "base/lines.h"
#include "platform/file_lock.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "base/json_text.h"

namespace corvane {

namespace fs = std::filesystem;

namespace {

void createDirectoryOf(const std::string& path) {
  std::error_code ignored;
  fs::create_directories(fs::path(path).parent_path(), ignored);
}

// Compact, with "/" escaped as "\/" like the desktop app's encoder; absent when the entry can't be encoded
// (a string that isn't valid UTF-8).
std::optional<std::string> encodeLine(const Activity& entry) { return encodeCompactJSON(toJSON(entry)); }

// Replaces the file with the last `maxEntries` of `lines`, joined by newlines.
void replaceWithLines(const std::string& path, const std::vector<std::string>& lines, size_t maxEntries) {
  const size_t first = lines.size() > maxEntries ? lines.size() - maxEntries : 0;
  std::string bytes;
  for (size_t i = first; i < lines.size(); ++i) {
    if (!bytes.empty()) bytes += '\n';
    bytes += lines[i];
  }
  createDirectoryOf(path);
  platform::replaceFileAtomically(path, bytes, platform::FileAccess::everyone);
}

// Every line that is a JSON object, as it is: the desktop app may write kinds, keys and dates this build
// can't decode, and they are its entries all the same. Anything else is no one's entry.
std::vector<std::string> objectLines(std::string_view text) {
  std::vector<std::string> lines;
  for (const std::string_view line : splitLines(text)) {
    if (line.empty()) continue;
    if (nlohmann::json::parse(line.begin(), line.end(), nullptr, false).is_object()) lines.emplace_back(line);
  }
  return lines;
}

}  // namespace

ActivityLog ActivityLog::standard() {
  return ActivityLog{platform::applicationSupportDirectory() + "/Corvane/activity.jsonl"};
}

std::vector<Activity> ActivityLog::read() const {
  std::vector<Activity> entries;
  const auto bytes = platform::readFile(path);
  if (!bytes) return entries;
  for (const std::string_view line : splitLines(*bytes)) {
    if (line.empty()) continue;
    const auto json = nlohmann::json::parse(line.begin(), line.end(), nullptr, false);
    if (json.is_discarded()) continue;
    auto entry = decodeActivity(json);
    if (entry) entries.push_back(std::move(*entry.value));
  }
  return entries;
}

void ActivityLog::write(const std::vector<Activity>& entries) const {
  std::vector<std::string> lines;
  for (const Activity& entry : entries)
    if (auto line = encodeLine(entry)) lines.push_back(std::move(*line));
  replaceWithLines(path, lines, maxEntries);
}

void ActivityLog::append(const std::vector<Activity>& entries) const {
  if (entries.empty()) return;
  createDirectoryOf(path);
  // Held until the end of this call; when the lock file can't be opened the cycle runs unlocked.
  const platform::ExclusiveFileLock lock(lockPath());
  const platform::FileContents existing = platform::readWholeFile(path);
  // Rewriting a log that is there but can't be read would lose every entry in it.
  if (existing.state == platform::FileState::unreadable) return;
  std::vector<std::string> lines = objectLines(existing.bytes);
  for (const Activity& entry : entries)
    if (auto line = encodeLine(entry)) lines.push_back(std::move(*line));
  replaceWithLines(path, lines, maxEntries);
}

}  // namespace corvane
