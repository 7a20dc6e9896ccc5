#pragma once
// Signals the stopper sends.
#include <cstdint>
#include <string_view>

#include "platform/process_table.h"

namespace corvane::platform {

enum class StopSignal {
  terminate,  // asks the process to end (SIGTERM)
  kill,       // ends it at once (SIGKILL)
};

enum class SignalResult {
  sent,
  notPermitted,  // the system refused it (EPERM)
  gone,          // the scanned process has exited, or its pid now names another process
  failed,        // anything else
};

// Signals the process the scan saw, never a newer one that has been given its pid since.
SignalResult sendSignal(const ScannedProcess& process, StopSignal signal);

int32_t ownPid();
int32_t parentPid();

// The system's name as its users know it, for the message when it refuses every signal.
std::string_view systemName();

}  // namespace corvane::platform
