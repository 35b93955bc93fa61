#include "hip/signal_routing.h"

#include <gtest/gtest.h>

#include <string>

#include "log_builder.h"
#include "support/padded_payload.h"

namespace {

constexpr std::uint32_t kLastLegacyVersion = 0x0BFFFFFF;

// Versions below 12.0 have no row in the table, so no log reaches this split.
TEST(SignalRouting, LegacySplitTakesBulkLengthsFromTheSignalHeader) {
  const struct {
    std::uint32_t version;
    unsigned bulk1;
    unsigned bulk2;
    const char* split;  // the offset and length of each part
  } kCases[] = {
      {kLastLegacyVersion, 6, 4, "0+30 30+6 36+4 "},
      {kLastLegacyVersion, 0, 0, "0+40 40+0 40+0 "},
      {kLastLegacyVersion, 30, 10, "0+0 0+30 30+10 "},
      {kLastLegacyVersion, 30, 11, ""},
      {kLastLegacyVersion, 0xFFFF, 17, ""},  // a sum above 16 bits
      {kLastLegacyVersion + 1, 30, 11, "0+39 39+1 "},
  };
  for (const auto& c : kCases) {
    const PaddedPayload payload(Fapi(0).PadTo(8).U32(c.bulk1, c.bulk2).PadTo(40).signal());
    std::string text;
    if (const auto split = SplitSignalRecord(payload.span(), 39, c.version)) {
      for (const SignalSpan part : {split->signal, split->bulk1, split->bulk2}) {
        if (part.data() == nullptr) continue;
        text += std::to_string(part.data() - payload.bytes()) + '+';
        text += std::to_string(part.size()) + ' ';
      }
    }
    EXPECT_EQ(text, c.split) << c.bulk1 << ' ' << c.bulk2;
  }
}

// The routing sends the five known ids to the HIP side, so no log reaches their lines.
TEST(SignalRouting, DriverSignals) {
  const struct {
    const char* bytes;
    const char* text;
    std::uint32_t result;
    bool unloaded;
  } kCases[] = {
      {"1080", "Driver: Unloaded", 1, true},
      {"1180 0000 0000 0000 0000 0000 70110100", "Driver: Dropped: 70000 Udi Frames", 1, false},
      {"1280 0000 0000 0000 0000 0000 00000080",
       "Driver: Dropped: -2147483648 Udi Basic Data Frames", 1, false},
      {"1180 0000 0000 0000 0000 0000 0102", "Driver: Dropped: 513 Udi Frames", 1, false},
      {"1380", "Driver: Suspended", 1, false},
      {"1480", "Driver: Resumed", 1, false},
      {"1580", "Unknown Driver Signal : 0x8015", 0, false},
      {"64", "Unknown Driver Signal : 0x0064", 0, false},
      {"", "Unknown Driver Signal : 0x0000", 0, false},
  };
  for (const auto& c : kCases) {
    const PaddedPayload payload(FromHex(c.bytes));
    EXPECT_EQ(RenderDriverSignal(payload.bytes()), c.text) << c.bytes;
    for (bool unloaded : {false, true}) {
      EXPECT_EQ(DecodeDriverSignal(payload.span(), unloaded), c.result) << c.bytes;
      EXPECT_EQ(unloaded, c.unloaded) << c.bytes;
    }
  }
}

TEST(SignalRouting, FirstAndLastIdsOfTheSides) {
  EXPECT_TRUE(IsDriverSide(0x0064));
  EXPECT_FALSE(IsDriverSide(0x0065));
  EXPECT_FALSE(IsDriverSide(0x9FFF));
  EXPECT_TRUE(IsDriverSide(0xA000));
}

}  // namespace
