#include "activity/activity_log.h"

#include <filesystem>
#include <optional>

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
  const size_t first = entries.size() > maxEntries ? entries.size() - maxEntries : 0;
  std::string bytes;
  for (size_t i = first; i < entries.size(); ++i) {
    auto line = encodeLine(entries[i]);
    if (!line) continue;
    if (!bytes.empty()) bytes += '\n';
    bytes += *line;
  }
  createDirectoryOf(path);
  platform::replaceFileAtomically(path, bytes, platform::FileAccess::everyone);
}

void ActivityLog::append(const std::vector<Activity>& entries) const {
  if (entries.empty()) return;
  createDirectoryOf(path);
  // Held until the end of this call; when the lock file can't be opened the cycle runs unlocked.
  const platform::ExclusiveFileLock lock(lockPath());
  auto all = read();
  all.insert(all.end(), entries.begin(), entries.end());
  write(all);
}

}  // namespace corvane
