#pragma once
// The rows as `stop` and `free` act on them: two scans 2 seconds apart, so that CPU use, builds and
// idleness describe the last 2 seconds rather than a process's whole life.
#include <vector>

#include "detect/item.h"
#include "scanner/scanner.h"

namespace corvane {

std::vector<Item> settledScan(Scanner& scanner);

}  // namespace corvane
