// Reads and prints any field of the vocabulary with any bytes. Bytes 0 and 1 of the input
// select a layout, byte 2 a field, byte 3 a version; the rest is the signal.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/little_endian.h"
#include "expect.h"
#include "fapi/vocabulary.h"
#include "hip/field_rendering.h"

namespace {

void CheckDump(const SignalView& signal, const CompiledField& field) {
  std::string text;
  auto append = [&text](std::string_view part) { text += part; };
  LinePiece piece;
  AppendDump(piece, ReadField(signal, field).bytes, append);
  text += piece.text();
  Expect(text.size() == 2 * std::size_t{signal.dump.length} + 2, "wrong length of a dump", text);
  Expect(text.front() == '{' && text.back() == '}', "no dump", text);
  for (std::size_t i = 0; i < signal.dump.length; ++i) {
    const std::string digits = text.substr(1 + 2 * i, 2);
    Expect(std::strtoul(digits.c_str(), nullptr, 16) == signal.dump.bytes[i], "wrong byte", text);
  }
}

void CheckField(const SignalView& signal, const CompiledField& field) {
  LinePiece piece;
  AppendField(piece, signal, field);
  const std::string text(piece.text());
  const FieldValue value = ReadField(signal, field);
  const std::string name(GetText(field.name).text());
  const bool has_blank = text.starts_with(' ');
  const bool may_lack_blank =
      field.form == FieldRenderer::kX16NoSpace ||
      (field.form == FieldRenderer::kEnum16 && signal.version < HipVersionTag::D);
  Expect(has_blank || may_lack_blank, "no blank", text);
  Expect(text.substr(has_blank ? 1 : 0).starts_with(name + ":"), "no name", text);
  for (const char c : text) Expect(c >= ' ' && c <= '~', "not printable", text);
  const std::string shown = text.substr(text.find(':') + 1);
  Expect(!shown.empty() && shown.size() <= kMaxValueText, "wrong length of a value", text);
  switch (value.kind) {
    case FieldValue::Kind::kNumber: {
      const bool is_hexadecimal = shown.starts_with("0x");
      const auto number = std::strtoll(shown.substr(is_hexadecimal ? 2 : 0).c_str(), nullptr,
                                       is_hexadecimal ? 16 : 10);
      Expect(number == value.number, "wrong number", text);
      break;
    }
    case FieldValue::Kind::kLabel:
      Expect(shown == value.label.text(), "wrong label", text);
      break;
    case FieldValue::Kind::kWords:
      for (std::uint32_t i = 0; i < value.bytes.length / 2; ++i) {
        Expect(std::strtoul(shown.substr(1 + 7 * std::size_t{i}).c_str(), nullptr, 16) ==
                   LoadU16(value.bytes.bytes + 2 * std::size_t{i}),
               "wrong word", text);
      }
      break;
    case FieldValue::Kind::kDigits:
    case FieldValue::Kind::kBytes:
      break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  const auto layouts = ListLayouts();
  const CompiledSignal& layout = layouts[LoadU16(data) % layouts.size()];
  const auto fields = GetFields(layout);
  const CompiledField& field = fields[data[2] % fields.size()];
  const HipVersionTag version = kHipVersionNames[data[3] % kHipVersionCount].tag;
  std::vector<std::uint8_t> bytes(data + 4, data + size);
  const SignalSpan dump{static_cast<std::uint32_t>(bytes.size()), bytes.data()};
  if (field.form == FieldRenderer::kDump) {
    CheckDump({version, 0, &layout, false, bytes.data(), dump}, field);
    return 0;
  }
  bytes.resize(layout.end);
  bytes.shrink_to_fit();
  CheckField({version, 0, &layout, false, bytes.data(), {}}, field);
  return 0;
}
