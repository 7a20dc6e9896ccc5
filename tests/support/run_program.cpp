#include "support/run_program.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace corvane::testing_support {

namespace {

std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

}  // namespace

std::string makeTempDir(const std::string& prefix) {
  const char* tmp = std::getenv("TMPDIR");
  std::string pattern = std::string(tmp ? tmp : "/tmp") + "/" + prefix + "-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  const char* made = mkdtemp(buffer.data());
  return made ? std::string(made) : std::string();
}

ProgramResult runProgram(const std::string& path, const std::vector<std::string>& arguments,
                         const std::string& input, const std::map<std::string, std::string>& environment) {
  std::string dir = makeTempDir("run");
  std::string inPath = dir + "/in", outPath = dir + "/out", errPath = dir + "/err";
  {
    std::ofstream(inPath, std::ios::binary) << input;
  }

  std::map<std::string, std::string> env;
  for (char** e = environ; *e; ++e) {
    std::string entry(*e);
    auto eq = entry.find('=');
    if (eq != std::string::npos) env[entry.substr(0, eq)] = entry.substr(eq + 1);
  }
  for (const auto& [k, v] : environment) env[k] = v;
  std::vector<std::string> envStrings;
  for (const auto& [k, v] : env) envStrings.push_back(k + "=" + v);
  std::vector<char*> envp;
  for (auto& s : envStrings) envp.push_back(s.data());
  envp.push_back(nullptr);

  std::vector<std::string> argStrings{path};
  argStrings.insert(argStrings.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (auto& s : argStrings) argv.push_back(s.data());
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, inPath.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  pid_t pid = 0;
  ProgramResult result;
  if (posix_spawn(&pid, path.c_str(), &actions, nullptr, argv.data(), envp.data()) == 0) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
    }
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
  }
  posix_spawn_file_actions_destroy(&actions);
  result.out = slurp(outPath);
  result.err = slurp(errPath);
  std::remove(inPath.c_str());
  std::remove(outPath.c_str());
  std::remove(errPath.c_str());
  rmdir(dir.c_str());
  return result;
}

ProgramResult runCorvane(const std::vector<std::string>& arguments, const std::string& input,
                         const std::map<std::string, std::string>& environment) {
  return runProgram(CORVANE_EXE, arguments, input, environment);
}

}  // namespace corvane::testing_support
