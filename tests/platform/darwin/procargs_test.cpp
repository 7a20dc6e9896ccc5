// The parser of macOS's argument areas is free of system calls, so it is tested on every system.
#include "platform/darwin/procargs.h"

#include <cstring>

#include <gmock/gmock.h>

namespace corvane::platform::darwin_proc {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// argc in host order followed by the given bytes, as the kernel hands the area over.
std::string area(int32_t argc, std::string_view rest) {
  std::string bytes(sizeof argc, '\0');
  std::memcpy(bytes.data(), &argc, sizeof argc);
  return bytes.append(rest);
}

using namespace std::string_view_literals;

TEST(ProcArgsTest, ArgumentsAfterThePathAndItsPaddingWithoutTheEnvironment) {
  const std::string bytes =
      area(3, "/opt/homebrew/bin/node\0\0\0\0\0\0node\0server.js\0--port=3000\0PATH=/usr/bin\0HOME=/Users/ann\0"sv);
  EXPECT_THAT(parseProcArgs(bytes), ElementsAre("node", "server.js", "--port=3000"));
  // No padding, an empty argument, and a last argument that runs to the end of the data.
  EXPECT_THAT(parseProcArgs(area(3, "/bin/sh\0sh\0\0-c"sv)), ElementsAre("sh", "", "-c"));
  // Fewer strings than argc: what is there is kept.
  EXPECT_THAT(parseProcArgs(area(4, "/bin/sleep\0sleep\0" "60\0"sv)), ElementsAre("sleep", "60"));
  // Areas too short, with no positive argc, or ending before any argument give none.
  EXPECT_THAT(parseProcArgs(area(1, "")), IsEmpty());
  EXPECT_THAT(parseProcArgs(area(-1, "/bin/sh\0sh\0"sv)), IsEmpty());
  EXPECT_THAT(parseProcArgs(area(2, "/bin/sh\0\0\0\0"sv)), IsEmpty());
}

}  // namespace
}  // namespace corvane::platform::darwin_proc
