#include "hip/signal_decoder.h"

#include <gtest/gtest.h>

#include <string>

#include "fapi/vocabulary.h"
#include "hip/hip_versions.h"
#include "log_builder.h"
#include "support/capture_stream.h"
#include "support/padded_payload.h"

namespace {

Fapi UnitdataReq() {  // as in versions D to L
  return Fapi(0x1000).U16(1, 0x1234, 5, 2, 1, 0).U32(0, 7, 0xFFFFFFFF);
}

// The reference text has all other lines.
TEST(SignalDecoder, BulkAndUnknownIds) {
  const std::string kFields =
      " vif:1 host_tag:0x1234 priority:qos_up5 peer_index:2 data_unit_descriptor:ieee802_3_frame "
      "bulk_data_descriptor:inline spare_1:0 spare_2:7 spare_3:";
  const struct {
    const char* what;
    Fapi signal;
    std::string bulk2;
    std::uint32_t result;
    std::string text;
    HipVersionTag version = HipVersionTag::L;
  } kCases[] = {
      {"the bulk is dumped, not the bytes after Min", UnitdataReq().Bytes("aabbcc").Bulk("0102"),
       "", 1, "ma_unitdata_req data:{0102}" + kFields + "4294967295\n"},
      {"unknown id", Fapi(0x1001).U16(1, 0).Spares(), "", 0, "Unknown Hip Signal : 0x1001\n"},
      {"missing id", Fapi(0x1000).PadTo(0), "", 0, "Unknown Hip Signal : 0x0000\n"},
      {"half an id", Fapi(0x1077).PadTo(1), "", 0, "Unknown Hip Signal : 0x0077\n"},
      {"the id's other half is bulk", Fapi(0x1000).PadTo(1).Bulk("20"), "", 0,
       "Unknown Hip Signal : 0x2000\n"},
      {"bulk 2 is not dumped or counted", UnitdataReq().PadTo(33), "\x7F", 0, ""},
      {"fields of a short signal extend into bulk 2", UnitdataReq().PadTo(32).Bulk("ff"), "\x7F", 1,
       "ma_unitdata_req data:{ff}" + kFields + "2147483647\n"},
      {"no bulk 1, and bulk 2 directly after the signal",
       Fapi(0x9013).U16(0xEEEE, 1, 2, 3, 4, 5, 6), FromHex("0700 0800"), 1,
       "debug_generic_req data:{} debug_words:[0x0001 0x0002 0x0003 0x0004 0x0005 0x0006 0x0007 "
       "0x0008 ] spare_1:0 spare_2:0 spare_3:0\n",
       HipVersionTag::B},
  };
  for (const auto& c : kCases) {
    const std::string& bulk = c.signal.bulk();
    const PaddedPayload payload(c.signal.signal() + bulk + c.bulk2);
    const auto signal_length = static_cast<std::uint32_t>(c.signal.signal().size());
    const auto bulk_length = static_cast<std::uint32_t>(bulk.size());
    const std::uint8_t* const bulk_bytes = payload.bytes() + signal_length;
    const std::string text = CaptureStandardOutput([&] {
      const std::uint32_t result = HipVersionTable[GetIndex(c.version)].decoder(
          signal_length, payload.bytes(), bulk_length, bulk.empty() ? nullptr : bulk_bytes,
          static_cast<std::uint32_t>(c.bulk2.size()), bulk_bytes + bulk_length);
      EXPECT_EQ(result, c.result) << c.what;
    });
    EXPECT_EQ(text, c.text) << c.what;
  }
}

}  // namespace
