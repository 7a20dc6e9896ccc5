#pragma once
// Child processes: one run to its end with standard output captured in a file, or one started and
// left alone. Both inherit this program's environment and working directory, and may be used from
// several threads at once.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvane::platform {

struct ChildOutput {
  int32_t status = 0;  // exit status
  std::string data;    // everything written to standard output
};

// Runs `path` with `arguments` (without the program name) in a process group of its own; standard
// input and error on /dev/null, standard output into the new file `outputFile`, which is deleted once
// the program has it open. At
// `timeoutSeconds` the program gets SIGTERM; if it is still running `killGraceSeconds` later it gets
// SIGKILL, so a program that ignores SIGTERM can't keep its caller waiting for ever.
// Absent when the program could not be started, the output file could not be created, or the
// program was ended by a signal.
std::optional<ChildOutput> runCapturingOutput(const std::string& path, const std::vector<std::string>& arguments,
                                              const std::string& outputFile, double timeoutSeconds,
                                              double killGraceSeconds);

// Ends every run in flight and whatever it started, and lets no new one start or return; for the
// end of the program (it runs at exit by itself), so that no run outlives it. The output files are
// removed as soon as the programs have them open, so none is left behind either.
void endRunsInFlight();

// For an interrupted stop: the runs in flight, and what they started, get SIGTERM, and no new run
// starts (each gives nothing at once); `killRunsInFlight` then ends those still running.
void interruptRunsInFlight();
void killRunsInFlight();

// Starts `path` in a session of its own with all three standard streams on /dev/null and returns at
// once; its end is collected in the background, so it never lingers as a zombie. False when it could
// not be started.
bool launchDetached(const std::string& path, const std::vector<std::string>& arguments);

}  // namespace corvane::platform
