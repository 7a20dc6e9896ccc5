#pragma once
// Bytes from the kernel (arguments, paths) are not promised to be UTF-8; records hold valid text.
#include <string>
#include <string_view>

namespace corvane {

// The bytes as UTF-8, each maximal ill-formed subsequence replaced by U+FFFD (the replacement
// that decoders commonly agree on, so the same bytes give the same text everywhere).
std::string repairedUTF8(std::string_view bytes);

}  // namespace corvane
