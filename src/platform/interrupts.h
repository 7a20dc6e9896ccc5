#pragma once
// Ctrl-C (SIGINT) and SIGTERM. Outside a stop either ends the program at once, with every program it
// started. During a stop, while an `InterruptHold` lives, the first one lets the stop finish early so
// that what it did is recorded: the stop's waits end (they ask `interrupted`), the programs it runs
// are ended and no new one starts; the command then exits with `interruptExitCode`. A second one
// ends the program at once.
#include <cstdint>
#include <optional>

namespace corvane::platform {

// Takes over both signals for the rest of the program, except one this program was started with
// ignored (a background job's SIGINT).
void catchInterrupts();

bool interrupted();

// 128 + the signal caught first (130 for SIGINT, 143 for SIGTERM), as a shell reports a program
// ended by it; absent while none was.
std::optional<int32_t> interruptExitCode();

class InterruptHold {
 public:
  InterruptHold();
  ~InterruptHold();
  InterruptHold(const InterruptHold&) = delete;
  InterruptHold& operator=(const InterruptHold&) = delete;
};

}  // namespace corvane::platform
