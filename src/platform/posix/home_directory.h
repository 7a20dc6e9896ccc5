#pragma once
// Where each system puts the home of a user that the password database doesn't list; defined in
// linux/ and darwin/ for the shared code of posix/.
#include <string>

namespace corvane::platform::os {

std::string homeWithoutPasswordEntry();

}  // namespace corvane::platform::os
