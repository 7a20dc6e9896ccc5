#pragma once
// An exclusive advisory lock (flock) on a lock file, held for the object's lifetime.
#include <string>

namespace corvane::platform {

class ExclusiveFileLock {
 public:
  // Opens `path` for reading and writing, creating it with mode 0644, and waits for the exclusive lock.
  // When the file can't be opened or locked the object holds nothing; `locked()` says which.
  explicit ExclusiveFileLock(const std::string& path);
  ~ExclusiveFileLock();  // closing the file releases the lock

  ExclusiveFileLock(const ExclusiveFileLock&) = delete;
  ExclusiveFileLock& operator=(const ExclusiveFileLock&) = delete;

  bool opened() const { return fd_ >= 0; }
  bool locked() const { return locked_; }

 private:
  int fd_ = -1;
  bool locked_ = false;
};

}  // namespace corvane::platform
