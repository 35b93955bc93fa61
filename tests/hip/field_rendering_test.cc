#include "hip/field_rendering.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "fapi/vocabulary.h"
#include "hip/record.h"
#include "log_builder.h"
#include "support/padded_payload.h"

namespace {

using Kind = FieldValue::Kind;

// An enumerated field of the vocabulary, "direction" of ma_blockack_ind. The tests use
// its name and its labels for all forms.
CompiledField FindDirection() {
  for (const CompiledField& field : GetFields(*FindSignal(kLastHipVersionTag, 0x1301))) {
    if (GetText(field.name).text() == "direction") return field;
  }
  std::abort();
}

struct Rendered {
  FieldValue value;
  std::string text;  // without the field's name
};

Rendered Render(FieldRenderer form, const std::string& bytes) {
  // The field is at an odd offset. The bytes around it must have no effect.
  const PaddedPayload payload('\xEE' + bytes + '\xEE');
  CompiledField field = FindDirection();
  field.offset = 1;
  field.form = form;
  if (form == FieldRenderer::kWords) field.words = static_cast<std::uint8_t>(bytes.size() / 2);
  const SignalView signal{kLastHipVersionTag, nullptr, payload.bytes(), {}};
  LinePiece piece;
  AppendField(piece, signal, field);
  const std::string text(piece.text());
  const std::string prefix = form == FieldRenderer::kX16NoSpace ? "direction:" : " direction:";
  EXPECT_EQ(text.substr(0, prefix.size()), prefix);
  return {ReadField(signal, field), text.substr(prefix.size())};
}

std::string RenderLine(const Record& record) {
  std::string line;
  LinePiece piece;
  RenderRecord(record, piece, [&line](std::string_view part) { line += part; });
  return line += piece.text();
}

TEST(FieldRendering, EveryFormHasItsValueAndText) {
  const struct {
    FieldRenderer form;
    const char* bytes;
    Kind kind;
    std::int64_t number;
    const char* text;
  } kCases[] = {
      {FieldRenderer::kU8, "ff", Kind::kNumber, 255, "255"},
      {FieldRenderer::kU16, "3412", Kind::kNumber, 4660, "4660"},
      {FieldRenderer::kU32, "ffffffff", Kind::kNumber, 4294967295, "4294967295"},
      {FieldRenderer::kU32, "00000080", Kind::kNumber, 2147483648, "2147483648"},
      {FieldRenderer::kI16, "ffff", Kind::kNumber, -1, "-1"},
      {FieldRenderer::kI16, "0080", Kind::kNumber, -32768, "-32768"},
      {FieldRenderer::kI32, "ffffffff", Kind::kNumber, -1, "-1"},
      {FieldRenderer::kI32, "00000080", Kind::kNumber, -2147483648, "-2147483648"},
      {FieldRenderer::kX16, "0000", Kind::kNumber, 0, "0x0000"},
      {FieldRenderer::kX16NoSpace, "1000", Kind::kNumber, 16, "0x0010"},
      {FieldRenderer::kX32, "2a000000", Kind::kNumber, 42, "0x0000002a"},
      {FieldRenderer::kMac, "000a0b0c0dfe", Kind::kDigits, 0, "00:0a:0b:0c:0d:fe"},
      {FieldRenderer::kHex8, "0102030405060708", Kind::kDigits, 0, "0x0102030405060708"},
      {FieldRenderer::kEnum16, "0100", Kind::kLabel, 1, "receive"},
      {FieldRenderer::kEnum16, "0001", Kind::kNumber, 256, "256"},
      {FieldRenderer::kWords, "0100 0200 ffff", Kind::kWords, 0, "[0x0001 0x0002 0xffff ]"},
      {FieldRenderer::kWords, "0100", Kind::kWords, 0, "[0x0001 ]"},
  };
  for (const auto& c : kCases) {
    const std::string what = std::string(GetForm(c.form).name) + " of " + c.bytes;
    const std::string bytes = FromHex(c.bytes);
    const Rendered rendered = Render(c.form, bytes);
    const bool has_bytes = c.kind == Kind::kDigits || c.kind == Kind::kWords;
    EXPECT_EQ(rendered.text, c.text) << what;
    EXPECT_EQ(rendered.value.kind, c.kind) << what;
    EXPECT_EQ(rendered.value.number, c.number) << what;
    EXPECT_EQ(rendered.value.label.text(), c.kind == Kind::kLabel ? c.text : "") << what;
    EXPECT_EQ(rendered.value.bytes.size(), has_bytes ? bytes.size() : 0) << what;
  }
}

TEST(FieldRendering, DecimalsOfEveryLength) {
  for (std::uint64_t power = 1; power <= 10'000'000'000; power *= 10) {
    for (const std::uint64_t value : {power - 1, power, power + power / 2, 2 * power - 1}) {
      if (value > 0xFFFFFFFF) continue;
      const auto number = static_cast<std::uint32_t>(value);
      EXPECT_EQ(Render(FieldRenderer::kU32, ToBytes(number, 4)).text, std::to_string(number));
      EXPECT_EQ(Render(FieldRenderer::kI32, ToBytes(number, 4)).text,
                std::to_string(static_cast<std::int32_t>(number)));
    }
  }
}

// Around the lengths of a vector of bytes and of a piece of a line, which has the name and
// the opening brace before the first digit.
TEST(FieldRendering, DumpsOfAnyLength) {
  constexpr std::size_t kPiece = LinePiece::capacity() / 2;
  std::vector<std::size_t> lengths = {0, 1, 15, 16, 17, 70000};
  for (std::size_t length = kPiece - 60; length < kPiece + 4; ++length) lengths.push_back(length);
  for (const std::size_t length : lengths) {
    std::string hex;
    for (std::size_t i = 0; i < 2 * length; ++i)
      hex += "0123456789abcdef"[(7 * i + i / 16 + i / 256) % 16];
    const PaddedPayload bulk(FromHex(hex));
    for (const char last_spare : {'\0', '\1'}) {
      const PaddedPayload signal(Fapi(0x1000).PadTo(30).U32(last_spare).signal());
      Record record = UnderstandSignal(kLastHipVersionTag, {signal.span(), {}, {}});
      record.signal.dump = bulk.span();
      const std::string line = RenderLine(record);
      EXPECT_EQ(line, "ma_unitdata_req data:{" + hex +
                          "} vif:0 host_tag:0x0000 priority:qos_up0 peer_index:0 "
                          "data_unit_descriptor:ieee802_11_frame bulk_data_descriptor:inline "
                          "spare_1:0 spare_2:0 spare_3:" +
                          (last_spare == 0 ? "0" : "1"))
          << length;
    }
  }
}

// Zero spares print as one text. The line must be that of the fields one by one, for
// each signal with zeros, and with each of its last bytes set.
TEST(FieldRendering, ZeroSpares) {
  for (const CompiledSignal& layout : ListLayouts()) {
    for (std::size_t set = layout.end - 13U; set <= layout.end; ++set) {
      std::vector<std::uint8_t> bytes(layout.end + std::size_t{1});
      bytes[set] = 1;
      const SignalView view{kLastHipVersionTag, &layout, bytes.data(), {}};
      LinePiece fields;
      fields.Append(GetText(layout.name));
      for (const CompiledField& field : GetFields(layout)) {
        if (field.form == FieldRenderer::kDump) {
          fields.Append(GetPrefix(field, true));
          fields.Append("{}");
        } else {
          AppendField(fields, view, field);
        }
      }
      ASSERT_EQ(RenderLine({.kind = Record::Kind::kSignal, .signal = view}), fields.text());
    }
  }
}

}  // namespace
