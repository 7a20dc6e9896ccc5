#include "cli/usage.h"

#include "base/system_texts.h"

namespace corvane {

const std::string_view usageText =
    CORVANE_USAGE_FIRST_LINE
    "\n"
    "USAGE\n"
    "  corvane status [--json]          What's running, by project, with RAM, ports and ids\n"
    "  corvane stop <id|port|project>   Stop one row by id or port, or a project's rows\n"
    "         [--yes] [--force] [--dry-run] [--json]\n"
    "  corvane free <GB>                Stop idle simulators, emulators and daemons until about GB are freed\n"
    "         [--dry-run] [--json]\n"
    "  corvane mcp                      MCP server over stdio, for coding agents\n"
    "\n"
    CORVANE_USAGE_LEFT_ALONE_LINE
    "database picked by id or port needs --yes. Stops are polite and wait 5 s; --force kills right away.\n"
    "\n"
    "EXIT CODES\n"
    "  0 done   1 something failed or is still running   2 nothing matched or nothing to stop\n"
    "  3 pinned or a database, pass --yes   64 usage";

const std::string_view gigabytesMessage = "free takes gigabytes, e.g. `corvane free 2`.\n";

}  // namespace corvane
