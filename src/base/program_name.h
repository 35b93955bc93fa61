#ifndef VRKT_BASE_PROGRAM_NAME_H_
#define VRKT_BASE_PROGRAM_NAME_H_

// The tool's name as the usage text and every report print it. Set once, at
// start, before anything is reported. It is global because the log's read
// primitive ends the process from any depth and reports under this name.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): see above
inline const char* programName = "vrkt_wlan_udi_log_decode";

#endif  // VRKT_BASE_PROGRAM_NAME_H_
