#include <chrono>

#include "base/exit_codes.h"
#include "base/json_text.h"
#include "cli/commands.h"
#include "cli/status_report.h"
#include "platform/output.h"
#include "scanner/scanner.h"
#include "stop/pins.h"

namespace corvane {

int32_t statusCommand(const Invocation& invocation) {
  Scanner scanner(Tools::load({}, nullptr, userShell()));
  const auto start = std::chrono::steady_clock::now();
  const std::vector<Item> items = scanner.scan();
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

  if (invocation.json) {
    nlohmann::json array = nlohmann::json::array();
    for (const auto& item : items) array.push_back(toJSON(item));
    platform::writeOut(encodeJSON(array) + "\n");
    return ExitCode::done;
  }
  platform::writeOut(statusText(items, readPins(), Memory::pressure(), Memory::swapUsed(), seconds));
  return ExitCode::done;
}

}  // namespace corvane
