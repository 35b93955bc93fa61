#ifndef VRKT_BASE_PROGRAM_NAME_H_
#define VRKT_BASE_PROGRAM_NAME_H_

// The tool's name in the usage text and in every report. Set once at start, before
// the first report. It is global because the function that reads a word of the log
// can report a failure and end the process at any depth of calls.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): see above
inline const char* programName = "vrkt_wlan_udi_log_decode";

#endif  // VRKT_BASE_PROGRAM_NAME_H_
