#include "activity/activity_log.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>

#include "platform/file_lock.h"
#include "platform/paths.h"
#include "snapshot/json_text.h"
#include "platform/uuid.h"

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

std::optional<std::string> readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) return std::nullopt;
  return bytes;
}

// Writes to a fresh file beside `path` and renames it over `path`.
void replaceAtomically(const std::string& path, const std::string& bytes) {
  const std::string temporary = path + "." + platform::newUUID() + ".tmp";
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    if (!out) return;
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) {
      std::error_code ignored;
      fs::remove(temporary, ignored);
      return;
    }
  }
  std::error_code error;
  fs::rename(temporary, path, error);
  if (error) fs::remove(temporary, error);
}

}  // namespace

ActivityLog ActivityLog::standard() {
  return ActivityLog{platform::applicationSupportDirectory() + "/Corvane/activity.jsonl"};
}

std::vector<Activity> ActivityLog::read() const {
  std::vector<Activity> entries;
  const auto bytes = readFile(path);
  if (!bytes) return entries;
  size_t start = 0;
  while (start < bytes->size()) {
    size_t end = bytes->find('\n', start);
    if (end == std::string::npos) end = bytes->size();
    if (end > start) {
      const auto json = nlohmann::json::parse(bytes->begin() + static_cast<std::ptrdiff_t>(start),
                                              bytes->begin() + static_cast<std::ptrdiff_t>(end), nullptr, false);
      if (!json.is_discarded()) {
        auto entry = decodeActivity(json);
        if (entry) entries.push_back(std::move(*entry.value));
      }
    }
    start = end + 1;
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
  replaceAtomically(path, bytes);
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
