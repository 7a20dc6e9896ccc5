#pragma once
// Whole files in and out, and the one loop that writes all of a text to a descriptor.
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::platform {

enum class FileState { read, missing, unreadable };

struct FileContents {
  FileState state = FileState::missing;
  std::string bytes;  // what was read; complete only when `state` is `read`
};

// The whole file. Only a regular file is read: anything else (a FIFO, a device) is unreadable, and never
// waited for. More than `limit` bytes make it unreadable, so a huge file is never held in memory.
FileContents readWholeFile(const std::string& path, size_t limit = std::numeric_limits<size_t>::max());
// The bytes of a file that could be read in full, else absent.
std::optional<std::string> readFile(const std::string& path, size_t limit = std::numeric_limits<size_t>::max());

// Who may read a replaced file: its owner alone (the desktop app's settings), or as the user's file mode
// mask allows (the activity log).
enum class FileAccess { ownerOnly, everyone };

// Writes `bytes` to a new file beside `path`, flushes it to the disk and renames it over `path`, so a reader
// sees the old file or the new one, never half of one, even after a crash. Creates the missing folders.
bool replaceFileAtomically(const std::string& path, std::string_view bytes, FileAccess access);

// Writes all of `bytes`, retrying after interruptions and partial writes; false on an error.
bool writeAll(int fd, std::string_view bytes);

}  // namespace corvane::platform
