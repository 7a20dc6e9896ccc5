#pragma once
// Which bytes may be handed to libplist at all. libplist stops the whole program on a string or key that
// holds a NUL character, silently cuts such a string short in a binary list, recurses once per level of
// nesting (a few thousand levels overflow the stack) and, in a binary list, builds a new node for every
// reference, so a few kilobytes that refer to the same arrays over and over expand past any memory.
// Lists that could do any of that are refused here, before libplist sees them.
#include <optional>
#include <string_view>

namespace corvane::platform::os {

enum class PlistForm { binary, xml };

// The form the bytes are in when they are safe to parse; absent when they are refused.
std::optional<PlistForm> screenPlist(std::string_view bytes);

}  // namespace corvane::platform::os
