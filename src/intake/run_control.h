#ifndef VRKT_INTAKE_RUN_CONTROL_H_
#define VRKT_INTAKE_RUN_CONTROL_H_

// The name used in reports, from the first entry of the argument vector: what
// follows its last "/", which may be nothing. The tool's own name if the entry is
// null.
const char* ResolveProgramName(const char* argument);

// The whole run, which starts with the banner. Takes the argument vector and
// returns the process's exit status: 0 at the end of the log, 1 for a run without
// arguments, -1 for wrong arguments or a log that cannot be opened. The end of the
// log in a word and a rejected header end the process from within.
int RunLogDecoder(int argc, const char* const* argv);

#endif  // VRKT_INTAKE_RUN_CONTROL_H_
