#pragma once
// The stop routine shared by `stop`, `free` and the MCP tools: every row at once, each stop that
// worked recorded in the activity log.
#include <string>
#include <vector>

#include "stop/outcome.h"
#include "detect/item.h"
#include "tools/tools.h"
#include "snapshot/proc.h"

namespace corvane {

// Polite stops wait 5 s for a row to go; forced ones kill (SIGKILL, `docker kill`).
enum class StopMode { polite, force };

// Stops the rows in parallel, one thread per row, politely unless `mode` forces, and returns one outcome
// per row in the order the stops finished. `started` holds the start times of the scan the rows come
// from, so that only the processes it saw are signalled. The rows that stopped are appended to the
// activity log in one go with `reason` ("corvane stop", "corvane free", "<agent> via MCP"); when none
// stopped the log is not touched.
std::vector<Outcome> stopRows(const std::vector<Item>& rows, const StartTimes& started, StopMode mode,
                              const std::string& reason, const Tools& tools);

}  // namespace corvane
