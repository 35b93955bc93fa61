#ifndef VRKT_BASE_PROGRAM_NAME_H_
#define VRKT_BASE_PROGRAM_NAME_H_

// The tool's name as the usage text and every report print it. Written once,
// at start, before anything can be reported; the log's read primitive ends the
// process from any depth and must be able to name it, hence one for the whole
// process.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): see above
inline const char* programName = "vrkt_wlan_udi_log_decode";

#endif  // VRKT_BASE_PROGRAM_NAME_H_
