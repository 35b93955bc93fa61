#ifndef VRKT_HIP_HIP_VERSIONS_H_
#define VRKT_HIP_HIP_VERSIONS_H_

#include <array>
#include <cstdint>

#include "fapi/hip_version_tags.h"
#include "hip/signal_decoder.h"

// One version of the host interface protocol.
struct HipVersionEntry {
  HipVersionTag tag;
  const char* name;       // dotted, as printed
  std::uint32_t version;  // packed: first number << 24 | second << 16 | third
  HipDecoder decoder;     // the version's entry point

  // For the capture file's global header. The interface allows each version its own
  // link type. All versions so far have the same one.
  std::uint32_t pcap_link_type;
};

// One row per version, in ascending order.
extern const std::array<HipVersionEntry, kHipVersionCount> HipVersionTable;

// Moves `hipCursor` forward to the row of exactly this packed version. The search starts
// at the row of the previous epoch: after a driver reload the version may stay the same
// or increase, but not decrease. Returns false, and leaves `hipCursor` as it is, if there
// is no such row.
bool SelectHipVersion(std::uint32_t hip_version, const HipVersionEntry*& hipCursor);

#endif  // VRKT_HIP_HIP_VERSIONS_H_
