#ifndef VRKT_WIRESHARK_EXTCAP_CAPTURE_H_
#define VRKT_WIRESHARK_EXTCAP_CAPTURE_H_

#include <string>

inline constexpr const char* kDefaultCommand = "vrkt_wlan_udi_log stdout";

struct CaptureOptions {
  std::string fifo;                       // "-" is standard output
  std::string command = kDefaultCommand;  // "-" reads the log from standard input
  std::string serial;                     // the phone that runs the command; empty for this PC
};

// Runs the command, and writes the frames of its log until the log ends or the capture is
// stopped. Returns the text for the user, with which a capture fails; it is empty if all
// went well.
std::string RunCapture(const CaptureOptions& options);

#endif  // VRKT_WIRESHARK_EXTCAP_CAPTURE_H_
