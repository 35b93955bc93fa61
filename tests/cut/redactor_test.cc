#include "redactor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "base/text_piece.h"
#include "fapi/vocabulary.h"
#include "frames.h"
#include "log_builder.h"
#include "support/padded_payload.h"

namespace {

const HipVersionEntry& kLastVersion = HipVersionTable.back();

std::string Redact(Redactor& redactor, std::string_view payload, std::size_t signal_length,
                   const HipVersionEntry& version = kLastVersion) {
  const PaddedPayload padded(payload);
  const auto id = static_cast<std::uint16_t>(padded.bytes()[0] | padded.bytes()[1] << 8);
  std::string redacted = "kept";
  redactor.AppendPayload({id, static_cast<std::uint32_t>(signal_length), padded.span()}, version,
                         redacted);
  EXPECT_EQ(redacted.size(), 4 + payload.size());
  return redacted.substr(4);
}

std::string ToHex(std::string_view bytes) {
  TextPiece<1000> hex;
  hex.AppendHex(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  return std::string(hex.text());
}

std::string Redact(const Fapi& signal) {
  Redactor redactor(false);
  return Redact(redactor, signal.signal() + signal.bulk(), signal.signal().size());
}

// mlme_received_frame_ind, mlme_connect_ind, mlme_connect_req.
enum class Dump : std::uint16_t { kWlan, kEthernet, kSubframe, kAmsdu, kTcpAck, kFrame, kElements };

Fapi MakeSignal(Dump dump) {
  if (dump == Dump::kFrame) return Fapi(0x2303).U16(1, 0).Spares();
  if (dump == Dump::kElements) return Fapi(0x200B).U16(1).Mac("000000000000").U16(0, 0).Spares();
  return Fapi(0x230D).U16(1, static_cast<unsigned>(dump), 0).Spares();
}

TEST(Redactor, WhatIsKeptOfFrames) {
  // Addresses of Ethernet and of IEEE 802.11, and their pseudonyms.
  const std::string kAddressPair = "0a0b0c0d0e0f 0a0b0c0d0e1f ";
  const std::string kNewAddressPair = "020000000001 020000000002 ";
  const std::string kAir = "0a0b0c0d0e0f 0a0b0c0d0e1f 0a0b0c0d0e0f ";
  const std::string kNewAir = "020000000001 020000000002 020000000001 ";
  const std::string kHtCapabilities = "2d1a" + std::string(52, '3');
  const struct {
    Dump dump;
    std::string frame;
    std::string redacted;
  } kCases[] = {
      {Dump::kEthernet, "01005e0a0b0c 0a0b0c0d0e0f 0800 4500",
       "030000000001 020000000002 0800 0000"},
      {Dump::kSubframe, "ffffffffffff 000000000000 0806 01", "ffffffffffff 000000000000 0806 00"},
      {Dump::kEthernet, "0a0b0c0d0e0f 0a0b0c0d0e0f 08", "020000000001 020000000001 00"},
      {Dump::kEthernet, "0a0b0c0d0e", "0000000000"},
      {Dump::kTcpAck, "0a0b0c0d0e0f 0a0b0c0d0e1f 08", "000000000000 000000000000 00"},
      {Dump::kAmsdu,
       "0a0b0c0d0e0f 0a0b0c0d0e1f 0003 aabbcc aabbcc 0a0b0c0d0e2f 0a0b0c0d0e1f 9000 aa",
       "020000000001 020000000002 0003 000000 000000 020000000003 020000000002 9000 00"},
      // EAPOL: a start, a name, a length that exceeds the frame, a version and a type that do
      // not exist.
      {Dump::kEthernet, kAddressPair + "888e 01010000 aabb",
       kNewAddressPair + "888e 01010000 0000"},
      {Dump::kEthernet, kAddressPair + "888e 02000003 aabbcc",
       kNewAddressPair + "888e 02000003 000000"},
      {Dump::kEthernet, kAddressPair + "888e 02000004 aabbcc",
       kNewAddressPair + "888e 00000000 000000"},
      {Dump::kEthernet, kAddressPair + "888e 77000003 aabbcc",
       kNewAddressPair + "888e 00000000 000000"},
      {Dump::kEthernet, kAddressPair + "888e 02770003 aabbcc",
       kNewAddressPair + "888e 00000000 000000"},
      {Dump::kEthernet, kAddressPair + "888e 02030004 77aabbcc",
       kNewAddressPair + "888e 02030004 00000000"},
      // Data: with and without protection, of another protocol, with four addresses, HT control.
      {Dump::kWlan, "8801 3a01" + kAir + "1000 0700 aaaa03000000 888e 01010000",
       "8801 3a01" + kNewAir + "1000 0700 aaaa03000000 888e 01010000"},
      {Dump::kWlan, "8841 3a01" + kAir + "1000 0700 aaaa03000000 888e 01010000",
       "8841 3a01" + kNewAir + "1000 0700 000000000000 0000 00000000"},
      {Dump::kWlan, "0801 3a01" + kAir + "1000 aaaa03000000 0800 45",
       "0801 3a01" + kNewAir + "1000 aaaa03000000 0800 00"},
      {Dump::kWlan, "0801 3a01" + kAir + "1000 aaaa03000001 0800 45",
       "0801 3a01" + kNewAir + "1000 000000000000 0000 00"},
      {Dump::kWlan, "4801 3a01" + kAir + "1000 aaaa03000000 0800",
       "4801 3a01" + kNewAir + "1000 000000000000 0000"},
      {Dump::kWlan, "8883 3a01" + kAir + "1000 0a0b0c0d0e2f 0700 aabbccdd aaaa03000000 0800",
       "8883 3a01" + kNewAir + "1000 020000000003 0700 00000000 aaaa03000000 0800"},
      // A control frame, one of another version, one of a later type.
      {Dump::kWlan, "b400 3a01 0a0b0c0d0e0f 0a0b0c0d0e1f 0a0b0c0d0e0f 1000",
       "b400 3a01 020000000001 020000000002 000000000000 0000"},
      {Dump::kWlan, "0901 3a01 0a0b0c0d0e0f", "0000 0000 000000000000"},
      {Dump::kWlan, "0c01 3a01 0a0b0c0d0e0f", "0000 0000 000000000000"},
      {Dump::kFrame, "0801 3a01 0a0b0c0d0e0f", "0000 0000 000000000000"},
      // Management: a beacon, requests, responses, authentication, SAE, action, protection.
      {Dump::kFrame, "8000 0000" + kAir + "1000 aabbccddeeff0011 6400 3104 0002 6162 0301 06",
       "8000 0000" + kNewAir + "1000 0000000000000000 6400 3104 0002 0000 0301 06"},
      {Dump::kWlan, "4000 0000" + kAir + "1000 0002 6162",
       "4000 0000" + kNewAir + "1000 0002 0000"},
      {Dump::kFrame, "2000 0000" + kAir + "1000 3104 0a00 0a0b0c0d0e2f 0002 6162",
       "2000 0000" + kNewAir + "1000 3104 0a00 020000000003 0002 0000"},
      {Dump::kFrame, "1000 0000" + kAir + "1000 3104 0000 01c0 0101 82",
       "1000 0000" + kNewAir + "1000 3104 0000 01c0 0101 82"},
      {Dump::kFrame, "b000 0000" + kAir + "1000 0000 0200 0000 1002 aabb",
       "b000 0000" + kNewAir + "1000 0000 0200 0000 1002 0000"},
      {Dump::kFrame, "b000 0000" + kAir + "1000 0300 0100 0000 1300 aa00",
       "b000 0000" + kNewAir + "1000 0300 0100 0000 0000 0000"},
      {Dump::kFrame, "d000 0000" + kAir + "1000 0401 aabbccdd",
       "d000 0000" + kNewAir + "1000 0401 00000000"},
      {Dump::kFrame, "c000 0000" + kAir + "1000 0400", "c000 0000" + kNewAir + "1000 0400"},
      {Dump::kFrame, "c040 0000" + kAir + "1000 0400", "c040 0000" + kNewAir + "1000 0000"},
      {Dump::kFrame, "c080 0000" + kAir + "1000 aabbccdd 0400",
       "c080 0000" + kNewAir + "1000 00000000 0400"},
      {Dump::kFrame, "6000 0000" + kAir + "1000 0002 6162",
       "6000 0000" + kNewAir + "1000 0000 0000"},
      {Dump::kFrame, "8000 0000" + kAir + "1000 aabbccddeeff0011 6400 31",
       "8000 0000" + kNewAir + "1000 0000000000000000 0000 00"},
      // Elements: of exact and other sizes; of a wrong length.
      {Dump::kElements, "0002 6162 0103 828496 0302 0607 dd04 0050f201",
       "0002 0000 0103 828496 0302 0000 dd04 00000000"},
      {Dump::kElements, kHtCapabilities + "2d01 aa 3201 0c", kHtCapabilities + "2d01 00 3201 0c"},
      {Dump::kElements, "0111 " + std::string(34, '8') + "c005 0102030405",
       "0111 " + std::string(34, '0') + "c005 0102030405"},
      {Dump::kElements, "0301 06 0002 61", "0000 00 0000 00"},
      {Dump::kElements, "0301 06 00", "0000 00 00"},
      // RSN: with a PMKID, a cipher of another organisation, a last suite; cut after a part and
      // within one.
      {Dump::kElements,
       "3026 0100 000fac04 0100 000fac04 0100 0050f202 0c00 0100 " + std::string(32, 'a'),
       "3026 0100 000fac04 0100 000fac04 0100 00000000 0c00 0100 " + std::string(32, '0')},
      {Dump::kElements, "301a 0100 000fac04 0100 000fac04 0100 000fac02 0c00 0000 000fac06",
       "301a 0100 000fac04 0100 000fac04 0100 000fac02 0c00 0000 000fac06"},
      {Dump::kElements, "3006 0100 000fac04 3002 0100", "3006 0100 000fac04 3002 0100"},
      {Dump::kElements, "3007 0100 000fac04 aa", "3007 0000 00000000 00"},
      {Dump::kElements, "300c 0100 000fac04 0200 000fac04", "300c 0000 00000000 0000 00000000"},
      {Dump::kElements, "3006 0200 000fac04", "3006 0000 00000000"},
  };
  for (const auto& [dump, frame, redacted] : kCases) {
    const Fapi signal = MakeSignal(dump);
    EXPECT_EQ(ToHex(Redact(Fapi(signal).Bulk(frame))), ToHex(Redact(signal) + FromHex(redacted)))
        << frame;
  }
}

// Of the messages of a handshake, only what says which it is: the same as in Wireshark.
TEST(Redactor, EapolMessages) {
  constexpr std::size_t kHeaderEnd = 21;  // of Ethernet, EAPOL and the key, with its information
  constexpr std::size_t kKeyDataLength = 111;
  for (unsigned message = 1; message <= 4; ++message) {
    const std::string frame = MakeEapolKeyFrame(message, "0a0b0c0d0e0f", "0a0b0c0d0e1f");
    std::string expected = frame;
    std::fill(expected.begin() + kHeaderEnd, expected.end(), '\0');
    expected.replace(0, 12, FromHex("020000000001 020000000002"));
    expected.replace(kKeyDataLength, 2, frame, kKeyDataLength, 2);
    const Fapi signal = MakeSignal(Dump::kEthernet);
    EXPECT_EQ(ToHex(Redact(Fapi(signal).BulkBytes(frame))), ToHex(Redact(signal) + expected));
    // A length that does not follow from the frame's could be anything.
    std::string longer = frame;
    ++longer[kKeyDataLength + 1];
    std::fill_n(expected.begin() + kKeyDataLength, 2, '\0');
    EXPECT_EQ(ToHex(Redact(Fapi(signal).BulkBytes(longer))), ToHex(Redact(signal) + expected));
  }
}

// The same throughout, in frames and in fields; or kept.
TEST(Redactor, Addresses) {
  Redactor redactor(false);
  Redactor keeping(true);
  const auto connect = Fapi(0x200B).U16(1).Mac("0a0b0c0d0e0f").U16(0, 0).Spares().signal();
  const std::string frame = FromHex("0a0b0c0d0e1f 0a0b0c0d0e0f 0800");
  const std::string received = MakeSignal(Dump::kEthernet).signal();
  EXPECT_EQ(Redact(redactor, connect, connect.size()).substr(12, 6), FromHex("020000000001"));
  EXPECT_EQ(Redact(redactor, received + frame, received.size()).substr(received.size()),
            FromHex("020000000002 020000000001 0800"));
  EXPECT_EQ(Redact(keeping, connect, connect.size()).substr(12, 6), FromHex("0a0b0c0d0e0f"));
  EXPECT_EQ(Redact(keeping, received + frame, received.size()).substr(received.size()), frame);
}

// Of any signal with any bytes, nothing is left that is not a field within the signal. Bytes of
// 0xA5 are no frame and no elements.
TEST(Redactor, NothingElseIsKept) {
  constexpr const char* kNeverKept[] = {"arg", "debug_words", "ipv4destination_address", "spare_1"};
  constexpr std::size_t kBulkSize = 64;
  for (const HipVersionEntry& version : HipVersionTable) {
    for (const KnownSignal& known : ListSignals(version.tag)) {
      const std::size_t whole = std::max(known.layout->min, known.layout->end);
      for (const std::size_t size : {whole + 9, std::size_t{known.layout->min}, std::size_t{15}}) {
        const std::size_t bulk = size == whole + 9 ? 0 : kBulkSize;
        const Fapi signal = Fapi(known.id).PadTo(2).PadTo(size + bulk, '\xA5');
        Redactor redactor(false);
        std::string redacted = Redact(redactor, signal.signal(), size, version);
        EXPECT_EQ(redacted.substr(0, 2), signal.signal().substr(0, 2));
        std::fill_n(redacted.begin(), 2, '\0');
        for (const CompiledField& field : GetFields(*known.layout)) {
          const std::size_t end = field.offset + GetWidth(field);
          const std::string_view name = GetText(field.name).text();
          if (field.form == FieldRenderer::kDump || end > size) continue;
          if (std::find(std::begin(kNeverKept), std::end(kNeverKept), name) != std::end(kNeverKept))
            continue;
          std::fill_n(redacted.begin() + field.offset, GetWidth(field), '\0');
        }
        EXPECT_EQ(redacted, std::string(redacted.size(), '\0'))
            << version.name << ' ' << GetText(known.layout->name).text() << ' ' << size;
      }
    }
    // Without fields: of the driver side, unknown, too short, longer than the record.
    Redactor redactor(false);
    for (const auto& [id, length] :
         {std::pair(0x0042, 20), {0x9FFF, 20}, {0x200B, 14}, {0x200B, 99}}) {
      const std::string payload =
          Fapi(static_cast<std::uint16_t>(id)).PadTo(length == 14 ? 14 : 20, '\xA5').signal();
      const std::string expected = payload.substr(0, 2) + std::string(payload.size() - 2, '\0');
      EXPECT_EQ(Redact(redactor, payload, static_cast<std::size_t>(length), version), expected)
          << id;
    }
  }
  Redactor redactor(false);
  EXPECT_EQ(Redact(redactor, "", 0), "");
  EXPECT_EQ(Redact(redactor, "\x42", 1), "\x42");
}

}  // namespace
