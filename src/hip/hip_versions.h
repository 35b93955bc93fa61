#ifndef VRKT_HIP_HIP_VERSIONS_H_
#define VRKT_HIP_HIP_VERSIONS_H_

#include <cstdint>
#include <span>

#include "fapi/hip_version_tags.h"
#include "hip/signal_decoder.h"

// One version of the host interface protocol.
struct HipVersionEntry {
  const char* name;              // dotted, as printed; null in the end row alone
  std::uint32_t version;         // packed: first number << 24 | second << 16 | third
  HipDecoder decoder;            // the version's entry point
  std::uint32_t pcap_link_type;  // for the capture file's global header
};

// One row for each version, in ascending order, and an end row of zeros. Only
// the name tells the end row: version 0 is a version that a log can name.
extern const HipVersionEntry HipVersionTable[kHipVersionCount + 1];

// The rows without the end row.
std::span<const HipVersionEntry> KnownHipVersions();

// Moves `hipCursor` on to the row of exactly this packed version and says on
// standard error that it was detected. The search starts where the last one
// ended: after a reload of the driver a log may stay at its version or move up,
// never down. Without such a row, reports that and ends the process with status
// -1.
void SelectHipVersion(std::uint32_t hip_version, const HipVersionEntry*& hipCursor);

#endif  // VRKT_HIP_HIP_VERSIONS_H_
