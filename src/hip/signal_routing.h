#ifndef VRKT_HIP_SIGNAL_ROUTING_H_
#define VRKT_HIP_SIGNAL_ROUTING_H_

#include <cstdint>
#include <optional>
#include <string>

#include "hip/hip_signal.h"

// A complete record with a signal. It borrows the payload.
struct SignalRecord {
  std::uint16_t id;             // bytes that the payload lacks read as zero
  std::uint32_t signal_length;  // in bytes, as in the record; can exceed the payload
  SignalSpan payload;           // readable up to kMaxSignalEnd, as a HipSignal
};

enum class SignalRoute : std::uint8_t {
  kHip,            // to the decoder of the epoch's version
  kInvalidLength,  // to no decoder: the lengths exceed the payload
  kDriver,         // to the driver side
  kUnknownDriver,  // to the driver side, which does not know the id
};

struct RoutedSignal {
  SignalRoute route;
  HipSignal signal;  // for kHip
};

// Returns where a record goes by its id, in an epoch of this packed HIP version.
RoutedSignal RouteSignal(const SignalRecord& record, std::uint32_t hip_version);

// Whether an id goes to the driver side.
bool IsDriverSide(std::uint16_t id);

// Splits a payload into signal and bulk by the rule of this packed HIP version. Returns
// nothing if the lengths exceed the payload.
std::optional<HipSignal> SplitSignalRecord(SignalSpan payload, std::uint32_t signal_length,
                                           std::uint32_t hip_version);

// What a signal of the driver side does to the state of the driver: it clears
// `driverUnloaded`, and one id sets it. Returns 1 if the id is known, otherwise 0.
std::uint32_t DecodeDriverSignal(SignalSpan payload, bool& driverUnloaded);

// The line of a signal of the driver side, with its line end.
std::string RenderDriverSignal(SignalSpan payload);

// The line in place of a signal that goes to no decoder. programName is part of it.
std::string RenderInvalidLength();

#endif  // VRKT_HIP_SIGNAL_ROUTING_H_
