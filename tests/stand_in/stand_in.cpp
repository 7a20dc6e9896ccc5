// A stand-in for an agent's native program: tests copy it to the path the agent's package installs, so
// that in the process table it is that program, with that command line. It runs each line of
// STAND_IN_RUN with /bin/sh as a child of its own, waits for its standard input to end, then ends the
// process groups of those children and exits.
#include <csignal>
#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

int main() {
  const char* run = std::getenv("STAND_IN_RUN");
  std::vector<pid_t> children;
  std::string lines = run ? run : "";
  for (size_t start = 0; start < lines.size();) {
    size_t end = lines.find('\n', start);
    if (end == std::string::npos) end = lines.size();
    const std::string line = lines.substr(start, end - start);
    start = end + 1;
    if (line.empty()) continue;
    const pid_t child = fork();
    if (child == 0) {
      setpgid(0, 0);  // a group of its own, so that what the line started ends with it
      execl("/bin/sh", "sh", "-c", line.c_str(), static_cast<char*>(nullptr));
      _exit(127);
    }
    if (child < 0) continue;
    setpgid(child, child);  // also here, so that the group exists before anything signals it
    children.push_back(child);
  }
  char buffer[256];
  while (read(STDIN_FILENO, buffer, sizeof buffer) > 0) {
  }
  for (const pid_t child : children) kill(-child, SIGTERM);
  for (const pid_t child : children) waitpid(child, nullptr, 0);
  return 0;
}
