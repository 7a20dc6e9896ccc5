// The activity log as the desktop app and other runs may leave it: every line that is taken as an
// entry is written back as the same entry at the next append.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

#include "activity/activity_log.h"
#include "base/json_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string file = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") +
                                  "/corvane-fuzz-" + std::to_string(getpid()) + ".jsonl";
  std::ofstream(file, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  for (const auto& entry : corvane::ActivityLog{file}.read()) {
    const auto line = corvane::encodeCompactJSON(corvane::toJSON(entry));
    if (!line) continue;  // left out when written, like any entry that can't be encoded
    const auto back = corvane::decodeActivity(nlohmann::json::parse(*line, nullptr, false));
    if (!back || !(*back.value == entry)) std::abort();
  }
  return 0;
}
