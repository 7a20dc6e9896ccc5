#pragma once
// The activity log shared with the desktop app and every other run of this program: one compact JSON
// object per line, oldest first, no newline after the last, at most `maxEntries` lines. Appends take an
// exclusive lock on the file beside it named like the log plus ".lock"; writes replace the file atomically,
// so readers that don't lock still see a whole file. An append never loses another writer's entry: it
// keeps every line that is a JSON object byte for byte, decodable or not, and leaves a log it can't read
// untouched. Nothing here fails loudly: directories that can't be made and failed writes only cost the
// new entries.
#include <cstddef>
#include <string>
#include <vector>

#include "activity/activity.h"

namespace corvane {

struct ActivityLog {
  std::string path;
  size_t maxEntries = 2000;

  // Application Support + "/Corvane/activity.jsonl".
  static ActivityLog standard();

  std::string lockPath() const { return path + ".lock"; }

  // Every line that decodes, in file order; empty when the file is missing or unreadable.
  std::vector<Activity> read() const;
  // Replaces the file with the last `maxEntries` of `entries`.
  void write(const std::vector<Activity>& entries) const;
  // Adds `entries` after the existing lines under the lock, dropping only lines that are not JSON objects
  // and, past `maxEntries` lines, the oldest. Touches nothing when `entries` is empty or the log exists
  // but can't be read.
  void append(const std::vector<Activity>& entries) const;
};

}  // namespace corvane
