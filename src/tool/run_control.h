#ifndef VRKT_TOOL_RUN_CONTROL_H_
#define VRKT_TOOL_RUN_CONTROL_H_

// Runs the tool with this argument vector and returns the exit status: 0 if the log
// ended or is damaged, 1 if there are no arguments, -1 if the arguments are wrong, the
// log cannot be opened, its header is rejected or a read fails outside a payload. Output
// that is still buffered is written when the process exits.
int RunLogDecoder(int argc, const char* const* argv);

#endif  // VRKT_TOOL_RUN_CONTROL_H_
