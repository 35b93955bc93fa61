#include "hip/field_value.h"

#include "base/little_endian.h"
#include "fapi/vocabulary.h"

FieldValue ReadField(const SignalView& signal, const CompiledField& field) {
  using Kind = FieldValue::Kind;
  const std::uint8_t* const bytes = signal.bytes + field.offset;
  switch (field.form) {
    case FieldRenderer::kU8:
      return {.number = *bytes};
    case FieldRenderer::kU16:
    case FieldRenderer::kX16:
    case FieldRenderer::kX16NoSpace:
      return {.number = LoadU16(bytes)};
    case FieldRenderer::kU32:
    case FieldRenderer::kX32:
      return {.number = LoadU32(bytes)};
    case FieldRenderer::kI16:
      return {.number = static_cast<std::int16_t>(LoadU16(bytes))};
    case FieldRenderer::kI32:
      return {.number = static_cast<std::int32_t>(LoadU32(bytes))};
    case FieldRenderer::kEnum16: {
      const std::uint16_t value = LoadU16(bytes);
      const PaddedText label = FindLabel(field.enum_index, value, signal.version);
      return {
          .kind = label.empty() ? Kind::kNumber : Kind::kLabel, .number = value, .label = label};
    }
    case FieldRenderer::kMac:
    case FieldRenderer::kHex8:
      return {.kind = Kind::kDigits, .bytes = {bytes, GetWidth(field)}};
    case FieldRenderer::kWords:
      return {.kind = Kind::kWords, .bytes = {bytes, GetWidth(field)}};
    case FieldRenderer::kDump:
      return {.kind = Kind::kBytes, .bytes = signal.dump};
  }
  return {};
}
