#pragma once
// Output of the form `docker ... --format "{{json .}}"`: one JSON object per line.
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace corvane {

// The lines that hold JSON objects, in order; empty lines, unparsable lines and other JSON values
// are skipped. Invalid UTF-8 is replaced first, so one bad byte costs at most its own line's text.
std::vector<nlohmann::json> parseJSONLines(std::string_view bytes);

}  // namespace corvane
