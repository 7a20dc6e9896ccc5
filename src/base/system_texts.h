#pragma once

// What the user and the agents read that names the system, chosen when compiling and only here. The
// Mac's build speaks of the Mac, its simulators and the desktop app that pins rows; a Linux machine has
// none of them. Macros, so that the usage text stays one literal.
#if defined(__APPLE__)
#define CORVANE_USAGE_FIRST_LINE "corvane: your Mac's dev stack and its RAM, from the command line.\n"
#define CORVANE_USAGE_LEFT_ALONE_LINE \
  "stop <project> and free leave pinned rows, databases and builds alone, like Blankwash. A pinned row or a\n"
#define CORVANE_AGENT_INSTRUCTIONS                                                                               \
  "Corvane sees the Mac's dev stack: simulators, emulators, Gradle and Kotlin daemons, Docker containers, "      \
  "bundlers, dev servers and databases, with their RAM. Call list_running before booting another simulator or "  \
  "emulator, free_memory when memory is tight, find_free_port before starting a server, and stop your own dev "  \
  "server when you're done. Agents can't stop pinned rows, databases, anything building, or what another agent " \
  "started."
#else
#define CORVANE_USAGE_FIRST_LINE "corvane: your dev stack and its RAM, from the command line.\n"
#define CORVANE_USAGE_LEFT_ALONE_LINE \
  "stop <project> and free leave pinned rows, databases and builds alone. A pinned row or a\n"
#define CORVANE_AGENT_INSTRUCTIONS                                                                             \
  "Corvane sees this machine's dev stack: emulators, Gradle and Kotlin daemons, Docker containers, bundlers, " \
  "dev servers and databases, with their RAM. Call list_running before booting another emulator, "             \
  "free_memory when memory is tight, find_free_port before starting a server, and stop your own dev server "   \
  "when you're done. Agents can't stop pinned rows, databases, anything building, or what another agent "      \
  "started."
#endif
