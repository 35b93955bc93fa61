#include "hip/field_rendering.h"

#include "base/little_endian.h"

namespace {

bool HasBlank(const SignalView& signal, const CompiledField& field, const FieldValue& value) {
  if (field.form == FieldRenderer::kEnum16 && value.kind == FieldValue::Kind::kNumber) {
    return HasBlankBeforeUnlabelled(signal.version);
  }
  return GetForm(field.form).has_blank;
}

// A blank follows each word, also the last. Intended.
void AppendWords(LinePiece& piece, SignalSpan words) {
  for (std::size_t i = 0; i < words.size(); i += 2) {
    piece.Append("0x");
    piece.AppendHex(LoadU16(words.data() + i));
    piece.Append(' ');
  }
}

}  // namespace

void AppendValue(LinePiece& piece, const CompiledField& field, const FieldValue& value) {
  // The form's texts are constants in each case.
  const auto before = [&piece](FieldRenderer form) { piece.Append(GetForm(form).before_value); };
  switch (field.form) {
    case FieldRenderer::kU8:
    case FieldRenderer::kU16:
    case FieldRenderer::kU32:
      piece.AppendDecimal(static_cast<std::uint32_t>(value.number));
      break;
    case FieldRenderer::kI16:
    case FieldRenderer::kI32:
      piece.AppendSigned(static_cast<std::int32_t>(value.number));
      break;
    case FieldRenderer::kX16:
    case FieldRenderer::kX16NoSpace:
      before(FieldRenderer::kX16);
      piece.AppendHex(static_cast<std::uint16_t>(value.number));
      break;
    case FieldRenderer::kX32:
      before(FieldRenderer::kX32);
      piece.AppendHex(static_cast<std::uint32_t>(value.number));
      break;
    case FieldRenderer::kMac:
      piece.AppendMac(value.bytes.data());
      break;
    case FieldRenderer::kHex8:
      before(FieldRenderer::kHex8);
      piece.AppendHex(value.bytes.data(), value.bytes.size());
      break;
    case FieldRenderer::kWords:
      before(FieldRenderer::kWords);
      AppendWords(piece, value.bytes);
      piece.Append(GetForm(FieldRenderer::kWords).after_value);
      break;
    case FieldRenderer::kEnum16:
      if (value.kind == FieldValue::Kind::kLabel) {
        piece.Append(value.label);
      } else {
        piece.AppendDecimal(static_cast<std::uint32_t>(value.number));
      }
      break;
    case FieldRenderer::kDump:
      break;  // RenderSignal prints dumps piece by piece
  }
}

void AppendField(LinePiece& piece, const SignalView& signal, const CompiledField& field) {
  const FieldValue value = ReadField(signal, field);
  piece.Append(GetPrefix(field, HasBlank(signal, field, value)));
  AppendValue(piece, field, value);
}
