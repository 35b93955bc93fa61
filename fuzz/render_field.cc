// Prints any field and any dump of the vocabulary with any bytes. Bytes 0 and 1 of the
// input select a layout, byte 2 a field, byte 3 a version; the rest is the signal.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/little_endian.h"
#include "expect.h"
#include "fapi/vocabulary.h"
#include "hip/field_rendering.h"
#include "support/capture_stream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  const auto layouts = ListSignals();
  const CompiledSignal& layout = layouts[LoadU16(data) % layouts.size()];
  const auto fields = GetFields(layout);
  const CompiledField& field = fields[data[2] % fields.size()];
  const auto version = static_cast<HipVersionTag>(data[3] % kHipVersionCount);
  std::vector<std::uint8_t> region(data + 4, data + size);

  if (layout.dump_count > 0) {
    const SignalSpan span{static_cast<std::uint32_t>(region.size()), region.data()};
    const std::string head(GetText(layout.dump_prefixes[0]).text());
    const std::string text =
        CaptureStandardOutput([&] { PrintDump(GetText(layout.dump_prefixes[0]), span); });
    Expect(text.size() == head.size() + 2 * region.size() + 1, "wrong length of a dump", text);
    Expect(text.starts_with(head) && text.back() == '}', "no dump", text);
    for (std::size_t i = 0; i < region.size(); ++i) {
      const std::string digits = text.substr(head.size() + 2 * i, 2);
      Expect(std::strtoul(digits.c_str(), nullptr, 16) == region[i], "wrong byte", text);
    }
  }

  region.resize(layout.end);
  const auto print = [&] { PrintFields({&field, 1}, region.data(), version); };
  const std::string text = CaptureStandardOutput(print);
  const std::string head(GetText(field.prefix).text());
  const bool lacks_blank = field.renderer == FieldRenderer::kEnum16 && version < HipVersionTag::D &&
                           text.starts_with(head.substr(1));
  Expect(lacks_blank || text.starts_with(head), "no name", text);
  Expect(text.size() > head.size() - (lacks_blank ? 1 : 0), "no value", text);
  for (const char c : text) Expect(c >= ' ' && c <= '~', "not printable", text);
  if (field.renderer == FieldRenderer::kU32) {
    Expect(text.substr(head.size()) == std::to_string(LoadU32(region.data() + field.offset)),
           "wrong number", text);
  }
  Expect(CaptureStandardOutput(print) == text, "the second text differs", text);
  return 0;
}
