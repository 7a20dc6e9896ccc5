#pragma once
// The four commands. Each writes its own output and returns the process's exit code.
#include <cstdint>
#include <string>
#include <vector>

namespace corvane {

int32_t statusCommand(bool json);
int32_t stopCommand(const std::string& target, bool yes, bool force, bool dryRun, bool json);
int32_t freeCommand(double gigabytes, bool dryRun, bool json);
int32_t mcpCommand();

// Runs what the argument vector asks for and returns the exit code; `arguments` excludes the program.
int32_t runMain(const std::vector<std::string>& arguments);

}  // namespace corvane
