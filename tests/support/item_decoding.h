#pragma once
// Items, their stops and containers read back from the JSON that toJSON prints: the fixtures and the
// round trips of the tests are written in it; the program itself only prints it.
#include <nlohmann/json.hpp>

#include "base/decoded.h"
#include "detect/item.h"

namespace corvane {

Decoded<Stop> decodeStop(const nlohmann::json& json);
Decoded<Item> decodeItem(const nlohmann::json& json);
Decoded<Container> decodeContainer(const nlohmann::json& json);

}  // namespace corvane
