#include "hip/signal_decoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "base/little_endian.h"
#include "base/text_piece.h"
#include "fapi/compiled_signal.h"
#include "fapi/vocabulary.h"
#include "hip/field_rendering.h"

namespace {

// Returns how many bytes are readable from the start of the signal. They include the
// bulk that directly follows, because the fields of a short signal extend into it.
std::size_t CountReadableBytes(const HipSignal& signal) {
  std::size_t readable = signal.signal.length;
  for (const SignalSpan* const bulk : {&signal.bulk1, &signal.bulk2}) {
    if (bulk->length == 0) continue;
    if (bulk->bytes != signal.signal.bytes + readable) break;
    readable += bulk->length;
  }
  return readable;
}

// The first bytes of a signal followed by zeros, for signals that end before their
// last field.
using PaddedSignal = std::array<std::uint8_t, 256>;

PaddedSignal PadSignal(const std::uint8_t* bytes, std::size_t readable) {
  PaddedSignal padded{};
  std::copy_n(bytes, std::min(readable, padded.size()), padded.begin());
  return padded;
}

void PrintUnknownSignal(std::uint16_t id) {
  TextPiece<32> piece;
  piece.Append("Unknown Hip Signal : 0x");
  piece.AppendHex(id);
  piece.Append('\n');
  piece.Print();
}

// Returns the bytes that the dumps show: the bulk, or without bulk the bytes from Min
// on. Min is not always the end of the fields.
SignalSpan SelectDumpRegion(const CompiledSignal& layout, const HipSignal& signal) {
  if (signal.bulk1.length != 0) return signal.bulk1;
  return {signal.signal.length - layout.min, signal.signal.bytes + layout.min};
}

void PrintSignal(const CompiledSignal& layout, const std::uint8_t* bytes, SignalSpan dump_region,
                 HipVersionTag version) {
  PrintPiece(GetText(layout.name).text());
  for (std::size_t i = 0; i < layout.dump_count; ++i) {
    PrintDump(GetText(layout.dump_prefixes[i]), dump_region);
  }
  PrintFields(GetFields(layout), bytes, version);
  PrintLineEnd();
}

}  // namespace

std::uint32_t DecodeHipSignal(HipVersionTag version, const HipSignal& signal) {
  const std::uint8_t* const bytes = signal.signal.bytes;
  const std::size_t readable = CountReadableBytes(signal);
  const std::uint16_t id =
      readable >= 2 ? LoadU16(bytes) : LoadU16(PadSignal(bytes, readable).data());
  const CompiledSignal* const layout = FindSignal(version, id);
  if (layout == nullptr) {
    PrintUnknownSignal(id);
    return 0;
  }
  if (signal.bulk1.length == 0 && signal.signal.length < layout->min) return 0;
  const SignalSpan dump_region = SelectDumpRegion(*layout, signal);
  if (readable >= layout->end) {
    PrintSignal(*layout, bytes, dump_region, version);
  } else {
    PrintSignal(*layout, PadSignal(bytes, readable).data(), dump_region, version);
  }
  return 1;
}
