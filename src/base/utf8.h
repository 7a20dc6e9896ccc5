#pragma once
// Bytes from the kernel (arguments, paths) are not promised to be UTF-8; records hold valid text.
#include <string>
#include <string_view>

namespace corvane {

// One Unicode scalar read from UTF-8 bytes, and how many bytes it took.
struct DecodedScalar {
  char32_t value = 0;
  size_t length = 0;
};

// The scalar at `at` (which must be inside `bytes`). A maximal ill-formed subsequence reads as one
// U+FFFD of the length of that subsequence, the replacement that decoders commonly agree on, so the
// same bytes give the same text everywhere.
DecodedScalar decodeUTF8(std::string_view bytes, size_t at);

// The bytes as UTF-8, each maximal ill-formed subsequence replaced by U+FFFD.
std::string repairedUTF8(std::string_view bytes);

}  // namespace corvane
