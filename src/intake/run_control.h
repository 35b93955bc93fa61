#ifndef VRKT_INTAKE_RUN_CONTROL_H_
#define VRKT_INTAKE_RUN_CONTROL_H_

// Runs the tool with this argument vector and returns the exit status: 0 if the log
// ended or is damaged, 1 if there are no arguments, -1 if the arguments are wrong or the
// log cannot be opened. In most runs it does not return, because the end of the log, a
// read failure or a rejected header ends the process (see log_stream.h).
int RunLogDecoder(int argc, const char* const* argv);

#endif  // VRKT_INTAKE_RUN_CONTROL_H_
