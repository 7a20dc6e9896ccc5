#include "platform/files.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/uuid.h"

namespace corvane::platform {

FileContents readWholeFile(const std::string& path, size_t limit) {
  FileContents contents;
  // Without O_NONBLOCK, opening a FIFO waits for a writer that may never come.
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) {
    contents.state = errno == ENOENT ? FileState::missing : FileState::unreadable;
    return contents;
  }
  // Only a regular file has an end: a FIFO, a socket or a device such as /dev/zero is not a file to read.
  struct stat status {};
  if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) || static_cast<uint64_t>(status.st_size) > limit) {
    close(fd);
    contents.state = FileState::unreadable;
    return contents;
  }
  contents.state = FileState::read;
  char buffer[16384];
  for (;;) {
    const ssize_t n = read(fd, buffer, sizeof buffer);
    if (n == 0) break;
    if (n < 0) {
      if (errno == EINTR) continue;
      contents.state = FileState::unreadable;
      break;
    }
    contents.bytes.append(buffer, static_cast<size_t>(n));
    if (contents.bytes.size() > limit) {
      contents.state = FileState::unreadable;
      break;
    }
  }
  close(fd);
  return contents;
}

std::optional<std::string> readFile(const std::string& path, size_t limit) {
  FileContents contents = readWholeFile(path, limit);
  if (contents.state != FileState::read) return std::nullopt;
  return std::move(contents.bytes);
}

bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t n = write(fd, bytes.data(), bytes.size());
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(n));
  }
  return true;
}

namespace {

// Every missing folder above `path`; one that can't be made shows when the file is opened.
void createParentDirectories(const std::string& path) {
  for (size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
    mkdir(path.substr(0, slash).c_str(), 0777);
}

}  // namespace

bool replaceFileAtomically(const std::string& path, std::string_view bytes, FileAccess access) {
  createParentDirectories(path);
  const std::string temporary = path + "." + newUUID() + ".tmp";
  const mode_t mode = access == FileAccess::ownerOnly ? 0600 : 0666;
  const int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (fd < 0) return false;
  const bool written = writeAll(fd, bytes) && fsync(fd) == 0;
  const bool closed = close(fd) == 0;
  if (!written || !closed || std::rename(temporary.c_str(), path.c_str()) != 0) {
    unlink(temporary.c_str());
    return false;
  }
  return true;
}

}  // namespace corvane::platform
