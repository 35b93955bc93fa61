#include "hip/signal_decoder.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "capture_stream.h"
#include "fapi/vocabulary.h"
#include "hip/field_rendering.h"
#include "hip/hip_versions.h"
#include "log_builder.h"
#include "padded_payload.h"

namespace {

struct Decoded {
  std::uint32_t result;
  std::string text;
  bool operator==(const Decoded&) const = default;
};

void PrintTo(const Decoded& decoded, std::ostream* out) {
  *out << decoded.result << " \"" << decoded.text << '"';
}

Decoded Decode(char version, const Fapi& signal) {
  const PaddedPayload payload(signal.signal() + signal.bulk());
  const auto length = static_cast<std::uint32_t>(signal.signal().size());
  Decoded decoded;
  decoded.text = CaptureStandardOutput([&] {
    decoded.result = HipVersionTable[static_cast<std::size_t>(version - 'A')].decoder(
        length, payload.bytes(), payload.length() - length, payload.bytes() + length, 0, nullptr);
  });
  return decoded;
}

Fapi UnitdataReq() {  // as in versions D to L
  return Fapi(0x1000).U16(1, 0x1234, 5, 2, 1, 0).U32(0, 7, 0xFFFFFFFF);
}

const std::string kUnitdataReqFields =
    " vif:1 host_tag:0x1234 priority:qos_up5 peer_index:2 data_unit_descriptor:ieee802_3_frame "
    "bulk_data_descriptor:inline spare_1:0 spare_2:7 spare_3:4294967295\n";

// The reference text has all other lines.
TEST(SignalDecoder, BulkAndUnknownIds) {
  // The bulk is dumped, not the bytes after Min.
  EXPECT_EQ(Decode('L', UnitdataReq().Bytes("aabbcc").Bulk("0102")),
            (Decoded{1, "ma_unitdata_req data:{0102}" + kUnitdataReqFields}));
  EXPECT_EQ(Decode('L', Fapi(0x1001).U16(1, 0).Spares()),
            (Decoded{0, "Unknown Hip Signal : 0x1001\n"}));
  // An id of the driver side.
  EXPECT_EQ(Decode('A', Fapi(0x8011).PadTo(40)), (Decoded{0, "Unknown Hip Signal : 0x8011\n"}));
}

// Zero spares print as one text. The line must be that of the fields one by one, for
// each signal with zeros, and with each of its last bytes set.
TEST(SignalDecoder, ZeroSpares) {
  for (const CompiledSignal& layout : ListLayouts()) {
    for (std::size_t set = layout.end - 13U; set <= layout.end; ++set) {
      std::vector<std::uint8_t> bytes(layout.end + std::size_t{1});
      bytes[set] = 1;
      const SignalView view{kLastHipVersionTag, 0, &layout, false, bytes.data(), {}};
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
      std::string line;
      RenderSignal(view, [&](std::string_view part) { line += part; });
      ASSERT_EQ(line, std::string(fields.text()) + '\n');
    }
  }
}

TEST(SignalDecoder, MissingIdBytesReadAsZero) {
  EXPECT_EQ(Decode('L', Fapi(0x1000).PadTo(0)), (Decoded{0, "Unknown Hip Signal : 0x0000\n"}));
  EXPECT_EQ(Decode('L', Fapi(0x1077).PadTo(1)), (Decoded{0, "Unknown Hip Signal : 0x0077\n"}));
  EXPECT_EQ(Decode('L', Fapi(0x1000).PadTo(1).Bulk("20")),
            (Decoded{0, "Unknown Hip Signal : 0x2000\n"}));
}

TEST(SignalDecoder, Bulk2IsNotDumpedOrCounted) {
  const PaddedPayload payload(UnitdataReq().PadTo(33).signal() + "\x7F");
  const std::uint8_t* const bytes = payload.bytes();
  const HipDecoder decoder = HipVersionTable.back().decoder;
  EXPECT_EQ(CaptureStandardOutput([&] { decoder(33, bytes, 0, bytes + 33, 1, bytes + 33); }), "");
  // Fields of a short signal extend into it, because it directly follows bulk 1.
  EXPECT_EQ(CaptureStandardOutput([&] { decoder(32, bytes, 1, bytes + 32, 1, bytes + 33); }),
            "ma_unitdata_req data:{ff}" +
                kUnitdataReqFields.substr(0, kUnitdataReqFields.size() - 11) + "2147483647\n");
  // Also if bulk 1 is empty and its address is null.
  const PaddedPayload words(Fapi(0x9013).U16(0xEEEE, 1, 2, 3, 4, 5, 6, 7, 8).signal());
  const std::uint8_t* const word_bytes = words.bytes();
  const HipDecoder decoder_of_b = HipVersionTable[1].decoder;
  EXPECT_EQ(
      CaptureStandardOutput([&] { decoder_of_b(24, word_bytes, 0, nullptr, 4, word_bytes + 24); }),
      "debug_generic_req data:{} debug_words:[0x0001 0x0002 0x0003 0x0004 0x0005 0x0006 0x0007 "
      "0x0008 ] spare_1:0 spare_2:0 spare_3:0\n");
}

}  // namespace
