#include "hip/signal_routing.h"

#include <gtest/gtest.h>

#include <string>

#include "hip/hip_versions.h"
#include "log_builder.h"
#include "padded_payload.h"

namespace {

constexpr std::uint32_t kLastLegacyVersion = 0x0BFFFFFF;

// Versions below 12.0 have no row in the table, so no log reaches this split.
TEST(SignalRouting, LegacySplitTakesBulkLengthsFromTheSignalHeader) {
  const struct {
    const char* what;
    std::size_t payload;
    unsigned bulk1;
    unsigned bulk2;
    bool accepted;
  } kCases[] = {
      {"both", 40, 6, 4, true},
      {"none", 40, 0, 0, true},
      {"the whole payload is bulk", 40, 30, 10, true},
      {"one byte too many", 40, 30, 11, false},
      {"a sum above 16 bits", 40, 0xFFFF, 0xFFFF, false},
  };
  for (const auto& c : kCases) {
    std::string payload(c.payload, '\0');
    payload[8] = static_cast<char>(c.bulk1);
    payload[9] = static_cast<char>(c.bulk1 >> 8);
    payload[12] = static_cast<char>(c.bulk2);
    payload[13] = static_cast<char>(c.bulk2 >> 8);
    const PaddedPayload block(payload);
    const SignalSpan span = block.span();
    const std::optional<HipSignal> split = SplitSignalRecord(span, 0xFFFFFFFF, kLastLegacyVersion);
    ASSERT_EQ(split.has_value(), c.accepted) << c.what;
    if (!split) continue;
    const std::uint32_t signal_length = span.length - c.bulk1 - c.bulk2;
    EXPECT_EQ(split->signal.length, signal_length) << c.what;
    EXPECT_EQ(split->signal.bytes, span.bytes);
    EXPECT_EQ(split->bulk1.length, c.bulk1);
    EXPECT_EQ(split->bulk1.bytes, span.bytes + signal_length);
    EXPECT_EQ(split->bulk2.length, c.bulk2);
    EXPECT_EQ(split->bulk2.bytes, span.bytes + signal_length + c.bulk1);
  }
  const std::string payload(40, '\xFF');
  const std::optional<HipSignal> split =
      SplitSignalRecord(PaddedPayload(payload).span(), 30, kLastLegacyVersion + 1);
  ASSERT_TRUE(split.has_value());
  EXPECT_EQ(split->signal.length, 30U);
}

// RouteSignal sends the five known ids to the HIP side, so no log reaches their lines.
TEST(SignalRouting, DriverSignals) {
  const struct {
    const char* bytes;
    const char* text;
    std::uint32_t result;
    bool unloaded;
  } kCases[] = {
      {"1080", "Driver: Unloaded\n", 1, true},
      {"1180 0000 0000 0000 0000 0000 70110100", "Driver: Dropped: 70000 Udi Frames\n", 1, false},
      {"1280 0000 0000 0000 0000 0000 00000080",
       "Driver: Dropped: -2147483648 Udi Basic Data Frames\n", 1, false},
      {"1180 0000 0000 0000 0000 0000 0102", "Driver: Dropped: 513 Udi Frames\n", 1, false},
      {"1380", "Driver: Suspended\n", 1, false},
      {"1480", "Driver: Resumed\n", 1, false},
      {"1580", "Unknown Driver Signal : 0x8015\n", 0, false},
      {"64", "Unknown Driver Signal : 0x0064\n", 0, false},
      {"", "Unknown Driver Signal : 0x0000\n", 0, false},
  };
  for (const auto& c : kCases) {
    const PaddedPayload payload(FromHex(c.bytes));
    EXPECT_EQ(RenderDriverSignal(payload.span()), c.text) << c.bytes;
    for (bool unloaded : {false, true}) {
      EXPECT_EQ(DecodeDriverSignal(payload.span(), unloaded), c.result) << c.bytes;
      EXPECT_EQ(unloaded, c.unloaded) << c.bytes;
    }
  }
}

TEST(SignalRouting, EachIdHasItsSide) {
  const PaddedPayload payload("");
  std::string sides;  // each side and the first id from which on it is used
  std::string last;
  for (unsigned id = 0; id <= 0xFFFF; ++id) {
    const auto id16 = static_cast<std::uint16_t>(id);
    const SignalRoute route =
        RouteSignal({id16, 0, payload.span()}, HipVersionTable[0].version).route;
    EXPECT_EQ(IsDriverSide(id16), route == SignalRoute::kUnknownDriver) << id;
    const std::string side = route == SignalRoute::kHip ? "hip" : "driver";
    if (side != last) sides += side + ' ' + std::to_string(id) + ' ';
    last = side;
  }
  EXPECT_EQ(sides, "driver 0 hip 101 driver 40960 ");
}

}  // namespace
