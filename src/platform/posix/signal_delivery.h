#pragma once
// Sending the stopper's signals by pid, shared by the systems; defined in posix/signals.cpp.
#include <csignal>

#include "platform/signals.h"

namespace corvane::platform::os {

int signalNumber(StopSignal signal);

// What a failed signal call's errno means for the stopper.
SignalResult failedSignal(int error);

// `sent` when the scanned process still runs, so that a signal may go to it; `gone` when it has ended or
// its pid names a newer process; `failed` when that can't be told.
SignalResult stillScanned(const ScannedProcess& process);

// Checks the start time just before kill(): without a handle on the process the two are separate
// steps, so only a pid reused in between could still be hit, no longer one reused since the scan.
SignalResult killIfStillScanned(const ScannedProcess& process, StopSignal signal);

}  // namespace corvane::platform::os
