#ifndef VRKT_HIP_SIGNAL_DECODER_H_
#define VRKT_HIP_SIGNAL_DECODER_H_

#include <cstdint>

#include "fapi/hip_version_tags.h"
#include "hip/hip_signal.h"

// The decoder of one version. It prints the rest of a signal's line to standard
// output, from the signal's name to the line end.
//
// Takes a HipSignal as six arguments, because the interface fixes this signature. No
// version dumps bulk 2.
//
// Returns 1 if it printed a signal line. Returns 0 if the version does not have the
// id, after printing a line that says so. Returns 0 and prints nothing if the signal
// is too short for its layout: the line that the caller began has no end.
using HipDecoder = std::uint32_t (*)(std::uint32_t signal_length, const std::uint8_t* signal,
                                     std::uint32_t bulk1_length, const std::uint8_t* bulk1,
                                     std::uint32_t bulk2_length, const std::uint8_t* bulk2);

// The common part of all decoders.
std::uint32_t DecodeHipSignal(HipVersionTag version, const HipSignal& signal);

// The decoder of one version, as a HipDecoder.
template <HipVersionTag kVersion>
std::uint32_t DecodeSignalOfVersion(std::uint32_t signal_length, const std::uint8_t* signal,
                                    std::uint32_t bulk1_length, const std::uint8_t* bulk1,
                                    std::uint32_t bulk2_length, const std::uint8_t* bulk2) {
  return DecodeHipSignal(kVersion,
                         {{signal, signal_length}, {bulk1, bulk1_length}, {bulk2, bulk2_length}});
}

#endif  // VRKT_HIP_SIGNAL_DECODER_H_
