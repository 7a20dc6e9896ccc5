#pragma once
// Where this system keeps the outside tools and the user's shell.
#include <string>
#include <vector>

namespace corvane::platform {

// The Android SDK's usual place when neither ANDROID_HOME nor ANDROID_SDK_ROOT names one.
std::string defaultAndroidSDKRoot();
// Where docker is usually installed, most likely first.
std::vector<std::string> dockerCandidates();
// The shell to use when SHELL is not set.
const char* defaultShell();

}  // namespace corvane::platform
