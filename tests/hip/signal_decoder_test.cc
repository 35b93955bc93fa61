#include "hip/signal_decoder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hip/hip_versions.h"
#include "support/log_builder.h"
#include "support/process.h"

namespace {

struct Decoded {
  std::uint32_t result;
  std::string text;
  bool operator==(const Decoded&) const = default;
};

void PrintTo(const Decoded& decoded, std::ostream* out) {
  *out << decoded.result << " \"" << decoded.text << '"';
}

// Decodes in a block exactly as long as the payload, for the sanitizers to see
// what is read behind it.
Decoded Decode(char version, const Fapi& signal) {
  const std::string payload = signal.signal() + signal.bulk();
  const std::vector<std::uint8_t> block(payload.begin(), payload.end());
  const auto length = static_cast<std::uint32_t>(signal.signal().size());
  Decoded decoded;
  decoded.text = CaptureStandardOutput([&] {
    decoded.result = KnownHipVersions()[static_cast<std::size_t>(version - 'A')].decoder(
        length, block.data(), static_cast<std::uint32_t>(signal.bulk().size()),
        block.data() + length, 0, nullptr);
  });
  return decoded;
}

Fapi UnitdataReq() {  // as in versions D to L
  return Fapi(0x1000).U16(1).U16(0x1234).U16(5).U16(2).U16(1).U16(0).U32(0).U32(7).U32(0xFFFFFFFF);
}

const std::string kUnitdataReqFields =
    " vif:1 host_tag:0x1234 priority:qos_up5 peer_index:2 data_unit_descriptor:ieee802_3_frame "
    "bulk_data_descriptor:inline spare_1:0 spare_2:7 spare_3:4294967295\n";

TEST(SignalDecoder, LinesOfTheDataPath) {
  const struct {
    const char* what;
    const char* versions;
    Fapi signal;
    std::string line;  // nothing if the signal is too short
  } kCases[] = {
      {"tail behind Min", "DFHIJKL", UnitdataReq().Bytes("aabbcc"),
       "ma_unitdata_req data:{aabbcc}" + kUnitdataReqFields},
      {"bulk instead of the tail", "DFHIJKL", UnitdataReq().Bytes("aabbcc").Bulk("0102"),
       "ma_unitdata_req data:{0102}" + kUnitdataReqFields},
      {"exactly Min", "DFHIJKL", UnitdataReq(), "ma_unitdata_req data:{}" + kUnitdataReqFields},
      {"no dump in G", "G", UnitdataReq().Bulk("0102"), "ma_unitdata_req" + kUnitdataReqFields},
      {"two dumps in E", "E", UnitdataReq().Bulk("0102"),
       "ma_unitdata_req data:{0102} data:{0102}" + kUnitdataReqFields},
      {"E skips four bytes before the tail", "E", UnitdataReq().Bytes("11223344 aa"),
       "ma_unitdata_req data:{aa} data:{aa}" + kUnitdataReqFields},
      {"one byte below Min", "DFGHIJKL", UnitdataReq().PadTo(33), ""},
      {"below the Min of E alone", "E", UnitdataReq().PadTo(37), ""},
      {"a short signal with bulk reads on into it", "L", UnitdataReq().PadTo(32).Bulk("ffff0102"),
       "ma_unitdata_req data:{ffff0102}" + kUnitdataReqFields},
      {"behind the last byte stand zeros", "L", Fapi(0x1000).U16(1).Bytes("34").Bulk("ab"),
       "ma_unitdata_req data:{ab} vif:1 host_tag:0xab34 priority:qos_up0 peer_index:0 "
       "data_unit_descriptor:ieee802_11_frame bulk_data_descriptor:inline spare_1:0 spare_2:0 "
       "spare_3:0\n"},
      {"unlabelled values stick to the field before in A to C", "A",
       Fapi(0x1000).U16(1).U16(2).U16(8).U16(3).U16(4).Spares(),
       "ma_unitdata_req data:{} vif:1 host_tag:0x0002priority:8 "
       "peer_index:3data_unit_descriptor:4 spare_1:0 spare_2:0 spare_3:0\n"},
      {"B knows the label that A does not", "BC",
       Fapi(0x1000).U16(1).U16(2).U16(0x8000).U16(3).U16(4).Spares(),
       "ma_unitdata_req data:{} vif:1 host_tag:0x0002 priority:contention peer_index:3 "
       "data_unit_descriptor:tcp_ack spare_1:0 spare_2:0 spare_3:0\n"},
      {"cfm has lost its dump", "FGHIJKL", Fapi(0x1100).U16(1).Bulk("05"),
       "ma_unitdata_cfm vif:1 transmission_status:unavailable_key_mapping host_tag:0x0000 "
       "sequence_number:0 peer_index:0 spare_1:0 spare_2:0 spare_3:0\n"},
      {"cfm of E has one dump and no surplus", "ABCDE",
       Fapi(0x1100).U16(1).U16(6).U16(9).U16(10).U16(11).Spares().Bytes("77"),
       "ma_unitdata_cfm data:{77} vif:1 transmission_status:unspecified_failure host_tag:0x0009 "
       "sequence_number:10 peer_index:11 spare_1:0 spare_2:0 spare_3:0\n"},
      {"ind", "DFHIJKL", Fapi(0x1300).U16(1).U16(3).U16(4).U16(7).U16(5).U16(6).U16(1).Spares(),
       "ma_unitdata_ind data:{} vif:1 data_unit_descriptor:amsdu sequence_number:4 "
       "priority:qos_up7 peer_index:5 proprieraty_information_length:6 "
       "bulk_data_descriptor:smapper spare_1:0 spare_2:0 spare_3:0\n"},
      {"addresses; `any` is a direction of some", "ABCDG",
       Fapi(0x1301).U16(1).Mac("00:0a:0b:0c:0d:0e").U16(2).U16(0x27).U16(3).U16(3).Spares(),
       "ma_blockack_ind vif:1 peer_qsta_address:00:0a:0b:0c:0d:0e sequence_number:2 "
       "reason_code:timeout blockack_parameter_set:3 direction:any spare_1:0 spare_2:0 "
       "spare_3:0\n"},
      {"its dump comes with I", "I",
       Fapi(0x1301).U16(1).Mac("00:0a:0b:0c:0d:0e").U16(2).U16(0x900A).U16(3).U16(0).Spares(),
       "ma_blockack_ind frame:{} vif:1 peer_qsta_address:00:0a:0b:0c:0d:0e sequence_number:2 "
       "reason_code:36874 blockack_parameter_set:3 direction:transmit spare_1:0 spare_2:0 "
       "spare_3:0\n"},
      {"and a reason with J", "JKL",
       Fapi(0x1301).U16(1).Mac("00:0a:0b:0c:0d:0e").U16(2).U16(0x900A).U16(3).U16(3).Spares(),
       "ma_blockack_ind frame:{} vif:1 peer_qsta_address:00:0a:0b:0c:0d:0e sequence_number:2 "
       "reason_code:ndp_response_timeout blockack_parameter_set:3 direction:3 spare_1:0 spare_2:0 "
       "spare_3:0\n"},
      {"Min of A is short of the fields", "A", Fapi(0x1302).U16(1).Mac("010203040506").PadTo(28),
       "ma_tx_failure_ind vif:1 peer_sta_address:01:02:03:04:05:06 spare_1:0 spare_2:0 "
       "spare_3:0\n"},
      {"and that of B is not", "B", Fapi(0x1302).U16(1).Mac("010203040506").PadTo(28), ""},
      {"control is D's and G's alone", "DG", Fapi(0x1001).U16(1).U16(0).Spares(),
       "ma_control_req vif:1 control_request_type:smapper_rx_config spare_1:0 spare_2:0 "
       "spare_3:0\n"},
      {"no such id", "EFHIJKL", Fapi(0x1001).U16(1).U16(0).Spares(),
       "Unknown Hip Signal : 0x1001\n"},
      {"a known id of the driver side is none here", "ABCDEFGHIJKL", Fapi(0x8011).PadTo(40),
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

TEST(SignalDecoder, ResultCodesFollowTheVersion) {
  const struct {
    char version;
    unsigned code;
    const char* text;
  } kCases[] = {
      {'D', 0x9002, " result_code:nan_invalid_publish_subscbe_id"},
      {'G', 0x9002, " result_code:nan_invalid_publish_subscribe_id"},
      {'D', 0x8000, " result_code:timeout"},
      {'G', 0x8013, " result_code:auth_no_ack"},
      {'D', 0x8013, " result_code:32787"},
      {'D', 0x8101, " result_code:33025"},
      {'G', 0x8100, " result_code:33024"},
      {'G', 0, " result_code:success"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Decode(c.version, Fapi(0x1101).U16(1).U16(c.code).Spares()).text,
              std::string("ma_control_cfm vif:1") + c.text + " spare_1:0 spare_2:0 spare_3:0\n");
  }
}

TEST(SignalDecoder, TheIdIsReadAsIfZerosStoodBehind) {
  EXPECT_EQ(Decode('L', Fapi(0x1000).PadTo(0)), (Decoded{0, "Unknown Hip Signal : 0x0000\n"}));
  EXPECT_EQ(Decode('L', Fapi(0x1077).PadTo(1)), (Decoded{0, "Unknown Hip Signal : 0x0077\n"}));
  EXPECT_EQ(Decode('L', Fapi(0x1000).PadTo(1).Bulk("20")),
            (Decoded{0, "Unknown Hip Signal : 0x2000\n"}));
}

TEST(SignalDecoder, Bulk2IsNeitherShownNorCounted) {
  const std::string payload = UnitdataReq().PadTo(33).signal() + "\x7F";
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(payload.data());
  const HipDecoder decoder = KnownHipVersions().back().decoder;
  EXPECT_EQ(CaptureStandardOutput([&] { decoder(33, bytes, 0, bytes + 33, 1, bytes + 33); }), "");
  // Fields of a short signal reach it all the same, since it lies behind bulk 1.
  EXPECT_EQ(CaptureStandardOutput([&] { decoder(32, bytes, 1, bytes + 32, 1, bytes + 33); }),
            "ma_unitdata_req data:{ff}" +
                kUnitdataReqFields.substr(0, kUnitdataReqFields.size() - 11) + "2147483647\n");
}

}  // namespace
