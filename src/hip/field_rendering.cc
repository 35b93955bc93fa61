#include "hip/field_rendering.h"

#include <algorithm>
#include <cstddef>

#include "base/little_endian.h"
#include "base/text_piece.h"
#include "fapi/vocabulary.h"

namespace {

constexpr std::size_t kCharsPerWord = 7;  // as in "0x0001 "
constexpr std::size_t kMaxValue = std::max(kPaddedTextSize, 1 + kMaxWords * kCharsPerWord);
using FieldPiece = TextPiece<kPaddedTextSize + kMaxValue>;

// In versions A to C an enumerated field whose value has no label prints without the
// blank before its name. Intended.
constexpr bool HasBlankBeforeUnlabelled(HipVersionTag version) {
  return version >= HipVersionTag::D;
}

// Appends the value. The caller has appended `prefix`.
void AppendEnumerated(FieldPiece& piece, PaddedText prefix, const CompiledField& field,
                      std::uint16_t value, HipVersionTag version) {
  const PaddedText label = FindLabel(field.enum_index, value, version);
  if (!label.empty()) {
    piece.Append(label);
    return;
  }
  if (!HasBlankBeforeUnlabelled(version)) {
    piece.Clear();
    piece.Append(std::string_view(prefix.data + 1, prefix.size - 1));
  }
  piece.AppendDecimal(value);
}

// A blank follows each word, also the last. Intended.
void AppendWords(FieldPiece& piece, const std::uint8_t* words, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    piece.Append("0x");
    piece.AppendHex(LoadU16(words + 2 * i));
    piece.Append(' ');
  }
  piece.Append(']');
}

void AppendSpares(FieldPiece& piece, const std::uint8_t* spares) {
  const std::uint32_t first = LoadU32(spares);
  const std::uint32_t second = LoadU32(spares + 4);
  const std::uint32_t third = LoadU32(spares + 8);
  if ((first | second | third) == 0) {  // as they nearly always are
    piece.Append("0 spare_2:0 spare_3:0");
    return;
  }
  piece.AppendDecimal(first);
  piece.Append(" spare_2:");
  piece.AppendDecimal(second);
  piece.Append(" spare_3:");
  piece.AppendDecimal(third);
}

void AppendField(FieldPiece& piece, const CompiledField& field, const std::uint8_t* signal,
                 HipVersionTag version) {
  const PaddedText prefix = GetText(field.prefix);
  const std::uint8_t* const bytes = signal + field.offset;
  piece.Append(prefix);
  switch (field.renderer) {
    case FieldRenderer::kU8:
      piece.AppendDecimal(*bytes);
      break;
    case FieldRenderer::kU16:
      piece.AppendDecimal(LoadU16(bytes));
      break;
    case FieldRenderer::kU32:
      piece.AppendDecimal(LoadU32(bytes));
      break;
    case FieldRenderer::kI16:
      piece.AppendSigned(static_cast<std::int16_t>(LoadU16(bytes)));
      break;
    case FieldRenderer::kI32:
      piece.AppendSigned(static_cast<std::int32_t>(LoadU32(bytes)));
      break;
    case FieldRenderer::kX16:
    case FieldRenderer::kX16NoSpace:
      piece.AppendHex(LoadU16(bytes));
      break;
    case FieldRenderer::kX32:
      piece.AppendHex(LoadU32(bytes));
      break;
    case FieldRenderer::kMac:
      piece.AppendMac(bytes);
      break;
    case FieldRenderer::kHex8:
      piece.AppendHex(bytes, 8);
      break;
    case FieldRenderer::kWords:
      AppendWords(piece, bytes, field.words);
      break;
    case FieldRenderer::kSpares:
      AppendSpares(piece, bytes);
      break;
    case FieldRenderer::kEnum16:
      AppendEnumerated(piece, prefix, field, LoadU16(bytes), version);
      break;
  }
}

}  // namespace

void PrintDump(PaddedText prefix, SignalSpan region) {
  constexpr std::size_t kBytesPerPiece = 512;
  TextPiece<kPaddedTextSize + 2 * kBytesPerPiece + 1> piece;
  piece.Append(prefix);
  std::size_t done = 0;
  while (region.length - done > kBytesPerPiece) {
    piece.AppendHex(region.bytes + done, kBytesPerPiece);
    piece.Print();
    piece.Clear();
    done += kBytesPerPiece;
  }
  piece.AppendHex(region.bytes + done, region.length - done);
  piece.Append('}');
  piece.Print();
}

void PrintFields(std::span<const CompiledField> fields, const std::uint8_t* signal,
                 HipVersionTag version) {
  for (const CompiledField& field : fields) {
    FieldPiece piece;
    AppendField(piece, field, signal, version);
    piece.Print();
  }
}
