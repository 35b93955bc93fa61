#ifndef VRKT_BASE_PROGRAM_NAME_H_
#define VRKT_BASE_PROGRAM_NAME_H_

// The tool's name in the usage text, in every report and in one line of the text. Set
// once at start, before the first report. It is global because that line is made far
// from the code that knows the arguments.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): see above
inline const char* programName = "vrkt_wlan_udi_log_decode";

#endif  // VRKT_BASE_PROGRAM_NAME_H_
