// Every test process runs with its own data, config and temporary directories, so that no test
// can read or write the real user's files.
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>

int main(int argc, char** argv) {
  char pattern[] = "/tmp/corvane-test-XXXXXX";
  if (!mkdtemp(pattern)) return 1;
  const std::string base = pattern;
  for (const char* name : {"data", "config", "tmp"}) std::filesystem::create_directories(base + "/" + name);
  setenv("XDG_DATA_HOME", (base + "/data").c_str(), 1);
  setenv("XDG_CONFIG_HOME", (base + "/config").c_str(), 1);
  setenv("TMPDIR", (base + "/tmp").c_str(), 1);
  testing::InitGoogleMock(&argc, argv);
  int result = RUN_ALL_TESTS();
  std::error_code ignored;
  std::filesystem::remove_all(base, ignored);
  return result;
}
