#ifndef VRKT_WIRESHARK_EXTCAP_LIVE_FRAMES_H_
#define VRKT_WIRESHARK_EXTCAP_LIVE_FRAMES_H_

#include <cstdint>
#include <string>

#include "hip/hip_versions.h"
#include "log/log_reader.h"

// Makes a pcap file of a log. The frames are those that the plugin makes of the same log,
// see format.lua. Only the reason why a log ends is always 0: a frame is written before the
// next record is read.

inline constexpr std::uint32_t kUser1LinkType = 148;

// Appends the header of the file.
void AppendFileHeader(std::string& file);

// Appends the frame of an item. A header of the log makes none.
void AppendFrame(const LogItem& item, const HipVersionEntry& version, std::string& file);

#endif  // VRKT_WIRESHARK_EXTCAP_LIVE_FRAMES_H_
