// Routes any record. Byte 0 of the input is the version; from 0xF0 on, a version below
// 12.0, which has the bulk lengths in the signal header. Bytes 1 to 4 are the record's
// signal length, the rest is the payload.

#include <cstdint>
#include <string>

#include "base/little_endian.h"
#include "expect.h"
#include "hip/hip_versions.h"
#include "hip/signal_routing.h"
#include "padded_payload.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 5) return 0;
  const std::uint32_t version =
      data[0] >= 0xF0 ? 0x0B000000 : HipVersionTable[data[0] % kHipVersionCount].version;
  const PaddedPayload payload({reinterpret_cast<const char*>(data) + 5, size - 5});
  const std::uint16_t id = LoadU16(payload.bytes());
  const SignalRecord record{id, LoadU32(data + 1), payload.span()};

  const RoutedSignal routed = RouteSignal(record, version);
  const bool is_of_driver =
      routed.route == SignalRoute::kDriver || routed.route == SignalRoute::kUnknownDriver;
  Expect(is_of_driver == (id < 0x65 || id > 0x9FFF), "routed to the wrong side", "");
  bool unloaded = true;
  const bool is_known = DecodeDriverSignal(record.payload, unloaded) == 1;
  const std::string line = RenderDriverSignal(record.payload);
  Expect(line.starts_with(is_known ? "Driver: " : "Unknown Driver Signal : 0x"), "wrong text",
         line);
  Expect(line.find('\n') == line.size() - 1, "not one line", line);
  Expect(unloaded == (line == "Driver: Unloaded\n"), "wrong state", line);
  if (routed.route != SignalRoute::kHip) return 0;
  const auto& [signal, bulk1, bulk2] = routed.signal;
  Expect(std::uint64_t{signal.length} + bulk1.length + bulk2.length == payload.length(),
         "wrong lengths", "");
  Expect(signal.bytes == payload.bytes() && bulk1.bytes == signal.bytes + signal.length,
         "parts with a gap", "");
  Expect(bulk2.length == 0 || bulk2.bytes == bulk1.bytes + bulk1.length, "parts with a gap", "");
  return 0;
}
