#ifndef VRKT_HIP_SIGNAL_ROUTING_H_
#define VRKT_HIP_SIGNAL_ROUTING_H_

#include <cstdint>
#include <optional>

#include "hip/hip_signal.h"
#include "hip/hip_versions.h"

// Decodes the payload of a complete record on the HIP side or on the driver side,
// depending on its id. `signal_length` is from the record. Header bytes that the
// payload lacks read as zero. A signal of the driver side clears `driverUnloaded`.
void RouteSignal(SignalSpan payload, std::uint32_t signal_length, const HipVersionEntry& version,
                 bool& driverUnloaded);

// Prints the line of a signal of the driver side. Returns 1 if the id is known,
// otherwise 0.
std::uint32_t DecodeDriverSignal(SignalSpan payload, bool& driverUnloaded);

// Splits a payload into signal and bulk by the rule of this packed HIP version. If the
// lengths exceed the payload, prints a message instead of the signal and returns
// nothing.
std::optional<HipSignal> SplitSignalRecord(SignalSpan payload, std::uint32_t signal_length,
                                           std::uint32_t hip_version);

#endif  // VRKT_HIP_SIGNAL_ROUTING_H_
