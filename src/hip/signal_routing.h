#ifndef VRKT_HIP_SIGNAL_ROUTING_H_
#define VRKT_HIP_SIGNAL_ROUTING_H_

#include <cstdint>
#include <optional>
#include <string>

#include "hip/hip_signal.h"

// The ids of the HIP side. All others are of the driver side.
inline constexpr std::uint16_t kFirstHipId = 0x0065;
inline constexpr std::uint16_t kLastHipId = 0x9FFF;

// Whether an id goes to the driver side.
bool IsDriverSide(std::uint16_t id);

// Splits a payload into signal and bulk by the rule of this packed HIP version. Returns
// nothing if the lengths exceed the payload.
std::optional<HipSignal> SplitSignalRecord(SignalSpan payload, std::uint32_t signal_length,
                                           std::uint32_t hip_version);

// Whether the driver side knows the id.
bool IsKnownDriverSignal(std::uint16_t id);

// What a signal of the driver side does to the state of the driver: it clears
// `driverUnloaded`, and one id sets it. Returns 1 if the id is known, otherwise 0.
std::uint32_t DecodeDriverSignal(SignalSpan payload, bool& driverUnloaded);

// The text of a signal of the driver side, which is readable up to kMaxSignalEnd.
std::string RenderDriverSignal(const std::uint8_t* bytes);

#endif  // VRKT_HIP_SIGNAL_ROUTING_H_
