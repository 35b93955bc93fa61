#include "hip/signal_decoder.h"

#include <gtest/gtest.h>

#include <string>

#include "hip/hip_versions.h"
#include "log_builder.h"
#include "support/capture_stream.h"
#include "support/padded_payload.h"

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

TEST(SignalDecoder, Lines) {
  const std::string kSpares = " spare_1:0 spare_2:0 spare_3:0\n";
  const struct {
    const char* what;
    const char* versions;
    Fapi signal;
    std::string line;  // empty if the signal is too short
  } kCases[] = {
      {"tail after Min", "DFHIJKL", UnitdataReq().Bytes("aabbcc"),
       "ma_unitdata_req data:{aabbcc}" + kUnitdataReqFields},
      {"bulk instead of the tail", "DFHIJKL", UnitdataReq().Bytes("aabbcc").Bulk("0102"),
       "ma_unitdata_req data:{0102}" + kUnitdataReqFields},
      {"exactly Min", "DFHIJKL", UnitdataReq(), "ma_unitdata_req data:{}" + kUnitdataReqFields},
      {"two dumps in E", "E", UnitdataReq().Bulk("0102"),
       "ma_unitdata_req data:{0102} data:{0102}" + kUnitdataReqFields},
      {"E skips four bytes before the tail", "E", UnitdataReq().Bytes("11223344 aa"),
       "ma_unitdata_req data:{aa} data:{aa}" + kUnitdataReqFields},
      {"one byte below Min", "DFGHIJKL", UnitdataReq().PadTo(33), ""},
      {"below the Min of E only", "E", UnitdataReq().PadTo(37), ""},
      {"fields that extend into the bulk", "L", UnitdataReq().PadTo(32).Bulk("ffff0102"),
       "ma_unitdata_req data:{ffff0102}" + kUnitdataReqFields},
      {"no blank before fields without a label in A to C", "A",
       Fapi(0x1000).U16(1, 2, 8, 3, 4).Spares(),
       "ma_unitdata_req data:{} vif:1 host_tag:0x0002priority:8 "
       "peer_index:3data_unit_descriptor:4 spare_1:0 spare_2:0 spare_3:0\n"},
      {"a label that A does not have", "BC", Fapi(0x1000).U16(1, 2, 0x8000, 3, 4).Spares(),
       "ma_unitdata_req data:{} vif:1 host_tag:0x0002 priority:contention peer_index:3 "
       "data_unit_descriptor:tcp_ack spare_1:0 spare_2:0 spare_3:0\n"},
      {"one dump in E, Min at the end of the fields", "ABCDE",
       Fapi(0x1100).U16(1, 6, 9, 10, 11).Spares().Bytes("77"),
       "ma_unitdata_cfm data:{77} vif:1 transmission_status:unspecified_failure host_tag:0x0009 "
       "sequence_number:10 peer_index:11 spare_1:0 spare_2:0 spare_3:0\n"},
      {"an address, a dump, a reason", "JKL",
       Fapi(0x1301).U16(1).Mac("00:0a:0b:0c:0d:0e").U16(2, 0x900A, 3, 3).Spares(),
       "ma_blockack_ind frame:{} vif:1 peer_qsta_address:00:0a:0b:0c:0d:0e sequence_number:2 "
       "reason_code:ndp_response_timeout blockack_parameter_set:3 direction:3 spare_1:0 spare_2:0 "
       "spare_3:0\n"},
      {"signed numbers, no blank before a name", "L",
       Fapi(0x9005).U16(2412, 0x10, 8, 9, 1).U32(0xFFFFFFFF, 2).U16(3).Spares(),
       "wlanlite_cw_start_req freq:2412power:0x0010 flags:8 type:9 amplitude:1 freq1:-1 freq2:2 "
       "phase:3" +
           kSpares},
      {"a skipped byte", "A",
       Fapi(0x8004).U16(1, 2, 3).U32(4).U16(5, 6).U32(0x01020304).U16(7, 1).U8(0xEE).Spares(),
       "debug_pkt_gen_start_req vif:1 end_point:2 direction:any interval:4 size:5 "
       "packets_per_interval:6 ipv4destination_address:16909060 packets_per_interrupt:7 "
       "use_streaming:true" +
           kSpares},
      {"eight bytes in stored order", "C",
       Fapi(0x2316).U16(1, 0x0100).Bytes("0102030405060708").Spares(),
       "mlme_event_log_ind vif:1event:256 timestamp:0x0102030405060708" + kSpares},
      {"words, Min inside the fields", "B",
       Fapi(0x2018).U16(1, 16, 2, 8).Mac("010203040506").PadTo(56, '\x01').Bytes("77"),
       "mlme_setkeys_req data:{0101010101010101010101010101010177} vif:1 length:16 key_id:2 "
       "key_type:oxygen address:01:02:03:04:05:06 sequence_number:[0x0101 0x0101 0x0101 0x0101 "
       "0x0101 0x0101 0x0101 0x0101 ] cipher_suite_selector:0x01010101 spare_1:16843009 "
       "spare_2:16843009 spare_3:16843009\n"},
      {"unknown id", "EFHIJKL", Fapi(0x1001).U16(1, 0).Spares(), "Unknown Hip Signal : 0x1001\n"},
      {"an id of the driver side is unknown here", "ABCDEFGHIJKL", Fapi(0x8011).PadTo(40),
       "Unknown Hip Signal : 0x8011\n"},
  };
  for (const auto& c : kCases) {
    for (const char* version = c.versions; *version != '\0'; ++version) {
      const Decoded decoded = Decode(*version, c.signal);
      const bool is_line = !c.line.empty() && !c.line.starts_with("Unknown");
      EXPECT_EQ(decoded, (Decoded{is_line ? 1U : 0U, c.line})) << c.what << " in " << *version;
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
