#ifndef VRKT_INTAKE_RUN_CONTROL_H_
#define VRKT_INTAKE_RUN_CONTROL_H_

// The name that reports carry, from the first entry of the argument vector:
// what stands behind its last "/" (nothing, if it ends in one). The tool's own
// name if the entry is null.
const char* ResolveProgramName(const char* argument);

// Writes the usage text to standard error.
void PrintUsage();

// The whole run, from the banner on. Takes the argument vector and returns the
// process's exit status: 0 at the end of the log, 1 for a run without
// arguments, -1 for all that was refused. The end of the log, and a header that
// is refused, end the process from within.
int RunLogDecoder(int argc, const char* const* argv);

#endif  // VRKT_INTAKE_RUN_CONTROL_H_
