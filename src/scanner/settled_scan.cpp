#include "scanner/settled_scan.h"

#include <chrono>
#include <thread>

namespace corvane {

std::vector<Item> settledScan(Scanner& scanner) {
  scanner.scan();
  // sleep_for measures on the steady clock, so a change of the wall clock can't stretch the pause.
  std::this_thread::sleep_for(std::chrono::seconds(2));
  return scanner.scan();
}

}  // namespace corvane
