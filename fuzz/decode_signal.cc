// Decodes any signal with any version. Byte 0 of the input is the version, bytes 1 and 2
// are the length of the bulk, the rest is the payload.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/little_endian.h"
#include "expect.h"
#include "hip/hip_versions.h"
#include "support/capture_stream.h"
#include "support/padded_payload.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const HipDecoder decoder = HipVersionTable[data[0] % kHipVersionCount].decoder;
  const PaddedPayload payload({reinterpret_cast<const char*>(data) + 3, size - 3});
  const std::uint32_t bulk = LoadU16(data + 1) % (payload.length() + 1);
  const std::uint32_t signal = payload.length() - bulk;

  std::uint32_t result = 0;
  const auto decode = [&] {
    result = decoder(signal, payload.bytes(), bulk, payload.bytes() + signal, 0, nullptr);
  };
  const std::string text = CaptureStandardOutput(decode);
  if (result == 1) {
    Expect(text.size() > 1 && text.find('\n') == text.size() - 1, "not one line", text);
    Expect(text[0] >= 'a' && text[0] <= 'z', "no name", text);
    for (const char c : text) {
      Expect((c >= ' ' && c <= '~') || c == '\n', "not printable", text);
    }
  } else {
    const std::string kUnknown = "Unknown Hip Signal : 0x";
    Expect(result == 0, "no result", text);
    Expect(text.empty() || (text.size() == kUnknown.size() + 5 && text.starts_with(kUnknown) &&
                            text.back() == '\n'),
           "neither empty nor an unknown signal", text);
    Expect(!text.empty() || bulk == 0, "a signal with bulk prints nothing", text);
  }
  Expect(CaptureStandardOutput(decode) == text, "the second line differs", text);
  return 0;
}
