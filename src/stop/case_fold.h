#pragma once
// Case-insensitive equality of UTF-8 text, for project names typed by the user. Folds ASCII, Latin-1,
// Latin Extended-A, Greek and Cyrillic letters; other characters and bytes that aren't valid UTF-8
// compare as they are.
#include <string_view>

namespace corvane {

bool equalIgnoringCase(std::string_view a, std::string_view b);

}  // namespace corvane
