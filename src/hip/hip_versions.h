#ifndef VRKT_HIP_HIP_VERSIONS_H_
#define VRKT_HIP_HIP_VERSIONS_H_

#include <array>
#include <cstdint>

#include "fapi/hip_version_tags.h"
#include "hip/signal_decoder.h"

// One version of the host interface protocol.
struct HipVersionEntry {
  const char* name;       // dotted, as printed
  std::uint32_t version;  // packed: first number << 24 | second << 16 | third
  HipDecoder decoder;     // the version's entry point

  // For the capture file's global header. The interface lets each version have a
  // link type of its own; so far all versions have the same one.
  std::uint32_t pcap_link_type;
};

// One row for each version, in ascending order.
extern const std::array<HipVersionEntry, kHipVersionCount> HipVersionTable;

// Moves `hipCursor` forward to the row of exactly this packed version and reports
// on standard error that it was detected. The search starts at the row of the last
// epoch: after a reload of the driver a log may stay at its version or move up,
// never down. If there is no such row, reports that and ends the process with
// status -1.
void SelectHipVersion(std::uint32_t hip_version, const HipVersionEntry*& hipCursor);

#endif  // VRKT_HIP_HIP_VERSIONS_H_
