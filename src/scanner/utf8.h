#pragma once
// Bytes that other programs printed, made into valid UTF-8 text.
#include <string>
#include <string_view>

namespace corvane {

// Each maximal ill-formed subsequence becomes one U+FFFD, as Unicode recommends.
std::string decodeUTF8Lossy(std::string_view bytes);

}  // namespace corvane
