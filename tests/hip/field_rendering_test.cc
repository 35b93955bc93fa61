#include "hip/field_rendering.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "fapi/vocabulary.h"
#include "log_builder.h"
#include "support/capture_stream.h"

namespace {

// An enumerated field of the vocabulary, " direction:" of ma_blockack_ind. The tests use
// its prefix and its labels for all forms.
CompiledField FindDirection() {
  for (const CompiledField& field : GetFields(*FindSignal(HipVersionTag::L, 0x1301))) {
    if (GetText(field.prefix).text() == " direction:") return field;
  }
  std::abort();
}

std::string Render(FieldRenderer renderer, const std::string& value, std::uint8_t words = 0,
                   HipVersionTag version = HipVersionTag::L) {
  // The field is at an odd offset. The bytes around it must have no effect.
  std::string bytes(1, '\xEE');
  bytes.append(value).append(1, '\xEE');
  CompiledField field = FindDirection();
  field.offset = 1;
  field.renderer = renderer;
  field.words = words;
  const std::string text = CaptureStandardOutput([&] {
    PrintFields({&field, 1}, reinterpret_cast<const std::uint8_t*>(bytes.data()), version);
  });
  const std::string prefix(GetText(field.prefix).text());
  EXPECT_EQ(text.substr(0, prefix.size()), prefix);
  return text.substr(prefix.size());
}

TEST(FieldRendering, EveryFormPrintsItsValue) {
  const struct {
    FieldRenderer renderer;
    const char* bytes;
    const char* text;
  } kCases[] = {
      {FieldRenderer::kU8, "ff", "255"},
      {FieldRenderer::kU8, "00", "0"},
      {FieldRenderer::kU16, "3412", "4660"},
      {FieldRenderer::kU16, "ffff", "65535"},
      {FieldRenderer::kU32, "ffffffff", "4294967295"},
      {FieldRenderer::kU32, "00000080", "2147483648"},
      {FieldRenderer::kI16, "ffff", "-1"},
      {FieldRenderer::kI16, "0080", "-32768"},
      {FieldRenderer::kI16, "ff7f", "32767"},
      {FieldRenderer::kI32, "ffffffff", "-1"},
      {FieldRenderer::kI32, "00000080", "-2147483648"},
      {FieldRenderer::kX16, "0000", "0000"},
      {FieldRenderer::kX16, "cdab", "abcd"},
      {FieldRenderer::kX16NoSpace, "1000", "0010"},
      {FieldRenderer::kX32, "2a000000", "0000002a"},
      {FieldRenderer::kX32, "efcdab89", "89abcdef"},
      {FieldRenderer::kMac, "000a0b0c0dfe", "00:0a:0b:0c:0d:fe"},
      {FieldRenderer::kHex8, "0102030405060708", "0102030405060708"},
      {FieldRenderer::kSpares, "00000000 00000000 00000000", "0 spare_2:0 spare_3:0"},
      {FieldRenderer::kSpares, "07000000 00000000 00000000", "7 spare_2:0 spare_3:0"},
      {FieldRenderer::kSpares, "00000000 ffffffff 00000000", "0 spare_2:4294967295 spare_3:0"},
      {FieldRenderer::kSpares, "00000000 00000000 0a000000", "0 spare_2:0 spare_3:10"},
      {FieldRenderer::kEnum16, "0100", "receive"},
      {FieldRenderer::kEnum16, "0001", "256"},
      {FieldRenderer::kEnum16, "ffff", "65535"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Render(c.renderer, FromHex(c.bytes)), c.text)
        << "form " << static_cast<int>(c.renderer) << " of " << c.bytes;
  }
}

TEST(FieldRendering, DecimalsOfEveryLength) {
  for (std::uint64_t power = 1; power <= 10'000'000'000; power *= 10) {
    for (const std::uint64_t value : {power - 1, power, power + power / 2, 2 * power - 1}) {
      if (value > 0xFFFFFFFF) continue;
      const auto number = static_cast<std::uint32_t>(value);
      EXPECT_EQ(Render(FieldRenderer::kU32, ToBytes(number, 4)), std::to_string(number));
      EXPECT_EQ(Render(FieldRenderer::kI32, ToBytes(number, 4)),
                std::to_string(static_cast<std::int32_t>(number)));
    }
  }
}

TEST(FieldRendering, WordsEndInABlank) {
  EXPECT_EQ(Render(FieldRenderer::kWords, FromHex("0100 0200 ffff"), 3), "0x0001 0x0002 0xffff ]");
  EXPECT_EQ(Render(FieldRenderer::kWords, FromHex("0100 0200 ffff"), 1), "0x0001 ]");
}

TEST(FieldRendering, DumpsOfAnyLength) {
  const std::string padded = " data:{" + std::string(kPaddedTextSize, '?');
  const PaddedText kHead{padded.data(), 7};
  for (const std::size_t length : {0U, 1U, 15U, 16U, 17U, 511U, 512U, 513U, 1024U, 1025U, 70000U}) {
    std::string bytes;
    std::string hex;
    for (std::size_t i = 0; i < length; ++i) {
      const auto byte = static_cast<unsigned char>(i * 7 + i / 256);
      bytes += static_cast<char>(byte);
      hex += "0123456789abcdef"[byte / 16];
      hex += "0123456789abcdef"[byte % 16];
    }
    EXPECT_EQ(CaptureStandardOutput([&] {
                PrintDump(kHead, {static_cast<std::uint32_t>(length),
                                  reinterpret_cast<const std::uint8_t*>(bytes.data())});
              }),
              " data:{" + hex + "}");
  }
}

}  // namespace
