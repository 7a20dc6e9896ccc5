#include <chrono>

#include "cli/commands.h"
#include "snapshot/json_text.h"
#include "cli/output.h"
#include "cli/status_report.h"
#include "scanner/scanner.h"
#include "stop/pins.h"

namespace corvane {

int32_t statusCommand(bool json) {
  Scanner scanner(Tools::load({}, nullptr, userShell()));
  const auto start = std::chrono::steady_clock::now();
  const std::vector<Item> items = scanner.scan();
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

  if (json) {
    nlohmann::json array = nlohmann::json::array();
    for (const auto& item : items) array.push_back(toJSON(item));
    writeOut(encodeJSON(array) + "\n");
    return 0;
  }
  writeOut(statusText(items, readPins(), Memory::pressure(), Memory::swapUsed(), seconds));
  return 0;
}

}  // namespace corvane
