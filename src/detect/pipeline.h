#pragma once
// The classification run: a World in, the rows of the dev stack out.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "detect/item.h"
#include "detect/world.h"

namespace corvane {

std::vector<Item> detect(const World& world);

// The upper-case UDID between two slashes in the device path that launchd_sim is given.
std::optional<std::string> simulatorUDID(std::string_view argument);

}  // namespace corvane
