#ifndef VRKT_HIP_SIGNAL_ROUTING_H_
#define VRKT_HIP_SIGNAL_ROUTING_H_

#include <cstdint>
#include <optional>

#include "hip/hip_signal.h"
#include "hip/hip_versions.h"

// Chooses the decoder of a complete record's payload by its id and calls it.
// `signal_length` is the record's word of that name. Bytes after the payload read
// as zero. A signal of the driver side clears `driverUnloaded`.
void RouteSignal(SignalSpan payload, std::uint32_t signal_length, const HipVersionEntry& version,
                 bool& driverUnloaded);

// Prints the line of a signal of the driver side. Returns 1 if it knew the id,
// otherwise 0.
std::uint32_t DecodeDriverSignal(SignalSpan payload, bool& driverUnloaded);

// Splits a payload into signal and bulk, by the rule of this packed HIP version.
// If the lengths do not fit the payload, prints that in place of the signal and
// returns nothing.
std::optional<HipSignal> SplitSignalRecord(SignalSpan payload, std::uint32_t signal_length,
                                           std::uint32_t hip_version);

#endif  // VRKT_HIP_SIGNAL_ROUTING_H_
