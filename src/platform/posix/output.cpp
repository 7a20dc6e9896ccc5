#include "platform/output.h"

#include <unistd.h>

#include "platform/files.h"

namespace corvane::platform {

void writeOut(std::string_view text) { writeAll(STDOUT_FILENO, text); }

void writeErr(std::string_view text) { writeAll(STDERR_FILENO, text); }

}  // namespace corvane::platform
