#pragma once
// The version the MCP server announces.
#include <string>

namespace corvane::platform {

// macOS: CFBundleShortVersionString of the app bundle around the executable. Linux has no bundle: the
// version the build was made with. "dev" when there is none.
std::string serverVersion();

}  // namespace corvane::platform
