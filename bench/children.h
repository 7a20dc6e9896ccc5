#pragma once
// Extra processes of the user for a benchmark: forked copies of it that sleep until they are killed,
// every other one listening on a loopback port. On Linux they die with the benchmark even if it crashes;
// elsewhere the destructor's SIGKILL is all there is.
#include <cerrno>
#include <csignal>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#ifdef __linux__
#include <sys/prctl.h>
#endif

namespace bench {

class Children {
 public:
  // Returns once every child that could be started is ready (listening, when it listens).
  explicit Children(int count) {
    int ready[2];
    if (pipe(ready) != 0) return;
    for (int i = 0; i < count; ++i) {
      const pid_t pid = start(i % 2 == 0, ready[1]);
      if (pid < 0) break;
      pids_.push_back(pid);
    }
    close(ready[1]);
    char byte;
    while (ready_ < pids_.size() && read(ready[0], &byte, 1) == 1) ++ready_;
    close(ready[0]);
  }

  ~Children() {
    for (const pid_t pid : pids_) kill(pid, SIGKILL);
    for (const pid_t pid : pids_)
      while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
      }
  }

  Children(const Children&) = delete;
  Children& operator=(const Children&) = delete;

  size_t started() const { return pids_.size(); }
  size_t ready() const { return ready_; }

 private:
  static pid_t start(bool listens, int ready) {
    const pid_t pid = fork();
    if (pid != 0) return pid;
#ifdef __linux__
    prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
    if (listens) {
      const int fd = socket(AF_INET, SOCK_STREAM, 0);
      sockaddr_in address{};
      address.sin_family = AF_INET;
      address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
      if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(fd, 4) != 0)
        _exit(1);
    }
    const char byte = 1;
    (void)!write(ready, &byte, 1);
    while (true) pause();
  }

  std::vector<pid_t> pids_;
  size_t ready_ = 0;
};

}  // namespace bench
