#pragma once
// The command line's JSON: pretty, sorted keys, "/" written as "\/"; empty text when encoding fails.
#include <string>

#include <nlohmann/json.hpp>

namespace corvane {

std::string encodeJSON(const nlohmann::json& value);

}  // namespace corvane
