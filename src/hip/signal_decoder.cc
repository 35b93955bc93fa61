#include "hip/signal_decoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "base/little_endian.h"
#include "base/text_piece.h"
#include "fapi/signal_layout.h"
#include "fapi/vocabulary.h"
#include "hip/field_rendering.h"

namespace {

// How many bytes can be read from the signal's first byte on: fields of a short
// signal fall on the bulk behind it.
std::size_t ReadableBytes(const HipSignal& signal) {
  std::size_t readable = signal.signal.length;
  for (const SignalSpan& bulk : {signal.bulk1, signal.bulk2}) {
    if (bulk.length == 0) continue;
    if (bulk.bytes != signal.signal.bytes + readable) break;
    readable += bulk.length;
  }
  return readable;
}

// The head of a signal with zeros behind its last byte, for the signals that
// end before their fields do.
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

// What the dumps show. Min is where the tail starts, also in the layouts whose
// fields end elsewhere.
SignalSpan DumpRegion(const SignalLayout& layout, const HipSignal& signal) {
  if (signal.bulk1.length != 0) return signal.bulk1;
  return {signal.signal.length - layout.min, signal.signal.bytes + layout.min};
}

void PrintSignal(const SignalLayout& layout, const std::uint8_t* bytes, SignalSpan dump_region,
                 HipVersionTag version) {
  PrintPiece(TextOf(layout.name).text());
  for (std::size_t i = 0; i < layout.dump_count; ++i) {
    PrintDump(TextOf(layout.dumps[i]), dump_region);
  }
  for (const FieldLayout& field : FieldsOf(layout)) PrintField(field, bytes, version);
  PrintLineEnd();
}

}  // namespace

std::uint32_t DecodeHipSignal(HipVersionTag version, const HipSignal& signal) {
  const std::uint8_t* const bytes = signal.signal.bytes;
  const std::size_t readable = ReadableBytes(signal);
  const std::uint16_t id =
      readable >= 2 ? LoadU16(bytes) : LoadU16(PadSignal(bytes, readable).data());
  const SignalLayout* const layout = FindSignal(version, id);
  if (layout == nullptr) {
    PrintUnknownSignal(id);
    return 0;
  }
  if (signal.bulk1.length == 0 && signal.signal.length < layout->min) return 0;
  const SignalSpan dump_region = DumpRegion(*layout, signal);
  if (readable >= layout->end) {
    PrintSignal(*layout, bytes, dump_region, version);
  } else {
    PrintSignal(*layout, PadSignal(bytes, readable).data(), dump_region, version);
  }
  return 1;
}
