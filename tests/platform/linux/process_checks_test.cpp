// What the stopper asks about single processes.
#include "platform/process_table.h"

#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/paths.h"

namespace corvane::platform {
namespace {

TEST(ProcessChecksTest, OwnerIsTheRealUserAndTheExecutable) {
  const auto self = processOwner(getpid());
  ASSERT_TRUE(self);
  EXPECT_EQ(self->realUid, getuid());
  EXPECT_EQ(self->path, ownExecutablePath());
  EXPECT_FALSE(processOwner(0x7ffffff0));
}

}  // namespace
}  // namespace corvane::platform
