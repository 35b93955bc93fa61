// Routes any record. Byte 0 of the input is the version; from 0xF0 on, a version below
// 12.0, which has the bulk lengths in the signal header. Bytes 1 to 4 are the record's
// signal length, the rest is the payload.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/little_endian.h"
#include "expect.h"
#include "hip/signal_routing.h"
#include "support/capture_stream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 5) return 0;
  static std::FILE* const kNowhere = std::fopen("/dev/null", "w");
  HipVersionEntry version = HipVersionTable[data[0] % kHipVersionCount];
  if (data[0] >= 0xF0) version.version = 0x0B000000;
  const std::uint32_t signal_length = LoadU32(data + 1);
  const std::vector<std::uint8_t> payload(data + 5, data + size);
  const SignalSpan span{static_cast<std::uint32_t>(payload.size()), payload.data()};

  bool unloaded = true;
  const auto route = [&] {
    std::FILE* const kept = stderr;
    stderr = kNowhere;  // discards the reports
    RouteSignal(span, signal_length, version, unloaded);
    stderr = kept;
  };
  const std::string text = CaptureStandardOutput(route);
  Expect(text.empty() || text.find('\n') == text.size() - 1, "not one line", text);
  const bool is_of_driver = text.starts_with("Unknown Driver Signal : 0x");
  Expect(unloaded != is_of_driver, "driverUnloaded does not match the routing", text);
  const std::uint16_t id = static_cast<std::uint16_t>((payload.empty() ? 0U : payload[0]) |
                                                      (payload.size() < 2 ? 0U : payload[1]) << 8);
  Expect(is_of_driver == (id < 0x65 || id > 0x9FFF), "routed to the wrong side", text);
  Expect(CaptureStandardOutput(route) == text, "the second line differs", text);
  return 0;
}
