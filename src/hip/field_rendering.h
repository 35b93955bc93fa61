#ifndef VRKT_HIP_FIELD_RENDERING_H_
#define VRKT_HIP_FIELD_RENDERING_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/little_endian.h"
#include "base/padded_text.h"
#include "base/text_piece.h"
#include "fapi/compiled_signal.h"
#include "fapi/vocabulary.h"
#include "hip/field_value.h"
#include "hip/hip_signal.h"

// The text of a signal's line, made of the values of its fields.

inline constexpr std::size_t kCharsPerWord = 7;  // as in "0x0001 "
inline constexpr std::size_t kMaxValueText =
    std::max(kPaddedTextSize, 2 + kMaxWords * kCharsPerWord);
inline constexpr std::size_t kMaxFieldText = kPaddedTextSize + kMaxValueText;

// Part of a line. Most lines fit into one.
using LinePiece = TextPiece<2048>;
static_assert(LinePiece::capacity() >= 4 * kMaxFieldText);

// In versions A to C an enumerated field whose value has no label prints without the
// blank before its name. Intended.
constexpr bool HasBlankBeforeUnlabelled(HipVersionTag version) {
  return version >= HipVersionTag::D;
}

// Appends the value of any field but a dump, with the text that its form has before and
// after it, as in "0x0102": at most kMaxValueText characters.
void AppendValue(LinePiece& piece, const CompiledField& field, const FieldValue& value);

// Appends any field but a dump, as in " host_tag:0x0102": at most kMaxFieldText
// characters.
void AppendField(LinePiece& piece, const SignalView& signal, const CompiledField& field);

// Appends the bytes of a dump. Whenever the piece is full, calls `emit` with its text and
// clears it. Leaves room for a character after the last byte.
template <typename Emit>
void AppendBytes(LinePiece& piece, SignalSpan bytes, Emit& emit) {
  std::size_t done = 0;
  for (;;) {
    const std::size_t count = std::min(bytes.size() - done, (piece.room() - 1) / 2);
    piece.AppendHex(bytes.data() + done, count);
    done += count;
    if (done == bytes.size()) break;
    emit(piece.text());
    piece.Clear();
  }
}

// Appends a dump, between the braces of its form.
template <typename Emit>
void AppendDump(LinePiece& piece, SignalSpan bytes, Emit& emit) {
  piece.Append(GetForm(FieldRenderer::kDump).before_value);
  AppendBytes(piece, bytes, emit);
  piece.Append(GetForm(FieldRenderer::kDump).after_value);
}

// The spares are nearly always zero. To print them as one text takes a fifth of the
// instructions off a line.
inline constexpr std::string_view kZeroSpares = " spare_1:0 spare_2:0 spare_3:0";

inline bool HasZeroSpares(const SignalView& signal) {
  if (!signal.layout->ends_in_spares) return false;
  const std::uint8_t* const spares = signal.bytes + signal.layout->end - 4 * kSpareCount;
  return (LoadU32(spares) | LoadU32(spares + 4) | LoadU32(spares + 8)) == 0;
}

// Appends the text of a signal with fields. Whenever the piece is full, calls `emit` with its
// text and clears it. Leaves room for a character after the text.
template <typename Emit>
void RenderSignal(const SignalView& signal, LinePiece& piece, Emit& emit) {
  const auto make_room = [&](std::size_t size) {
    if (piece.room() >= size) return;
    emit(piece.text());
    piece.Clear();
  };
  make_room(kPaddedTextSize);
  piece.Append(GetText(signal.layout->name));
  std::span<const CompiledField> fields = GetFields(*signal.layout);
  const bool spares_are_zero = HasZeroSpares(signal);
  if (spares_are_zero) fields = fields.first(fields.size() - kSpareCount);
  for (const CompiledField& field : fields) {
    make_room(kMaxFieldText);
    if (field.form == FieldRenderer::kDump) {
      piece.Append(GetPrefix(field, true));
      AppendDump(piece, signal.dump, emit);
    } else {
      AppendField(piece, signal, field);
    }
  }
  make_room(kZeroSpares.size() + 1);
  if (spares_are_zero) piece.Append(kZeroSpares);
}

#endif  // VRKT_HIP_FIELD_RENDERING_H_
