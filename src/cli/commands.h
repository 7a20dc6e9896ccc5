#pragma once
// The four commands. Each writes its own output and returns the process's exit code.
#include <cstdint>
#include <string>
#include <vector>

#include "cli/arguments.h"

namespace corvane {

int32_t statusCommand(const Invocation& invocation);
int32_t stopCommand(const Invocation& invocation);
int32_t freeCommand(const Invocation& invocation);
int32_t mcpCommand();

// Runs what the argument vector asks for and returns the exit code; `arguments` excludes the program.
int32_t runMain(const std::vector<std::string>& arguments);

}  // namespace corvane
