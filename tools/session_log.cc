// A typical session: a phone scans, connects, sets keys, exchanges frames, roams, loses
// the network and fails to reconnect. Then the driver is reloaded with a later HIP
// version and runs a radio test.

#include "session_log.h"

namespace {

constexpr std::uint32_t kMorning = 1780297200;  // 2026-06-01 07:00:00 UTC
constexpr std::uint32_t kAfterReload = kMorning + 65;

constexpr unsigned kVif = 1;
constexpr unsigned kScan = 1;
constexpr unsigned kPeer = 1;  // the access point's index

constexpr const char* kPhone = "00:11:22:33:44:55";
constexpr const char* kFirstAccessPoint = "0a:0b:0c:0d:0e:0f";
constexpr const char* kSecondAccessPoint = "0a:0b:0c:0d:0e:1f";
constexpr const char* kAnybody = "ff:ff:ff:ff:ff:ff";

// In units of 0.5 MHz.
constexpr unsigned kChannel6 = 2 * 2437;
constexpr unsigned kChannel11 = 2 * 2462;

// Enumerated values, named after their labels.
constexpr unsigned kSuccess = 0;
constexpr unsigned kFullScan = 2;
constexpr unsigned kRealTime = 4;
constexpr unsigned kStation = 2;
constexpr unsigned kOpenSystem = 0;
constexpr unsigned kConnectionStarted = 1;
constexpr unsigned kRoamingStarted = 3;
constexpr unsigned kGroup = 0;
constexpr unsigned kPairwise = 1;
constexpr unsigned kQosUp0 = 0;
constexpr unsigned kQosUp6 = 6;
constexpr unsigned kContention = 0x8000;
constexpr unsigned kIeee8023Frame = 1;
constexpr unsigned kInline = 0;
constexpr unsigned kSuccessful = 0;
constexpr unsigned kRetryLimit = 1;
constexpr unsigned kEapolKeyM123 = 2;
constexpr unsigned kTimeout = 0x27;
constexpr unsigned kHostRequestFailed = 0x800C;

constexpr std::uint32_t kCcmp = 0x000FAC04;  // a cipher suite of IEEE 802.11

// The first bytes of a beacon, of an EAPOL key frame and of a ping, and an ARP request
// with its reply.
constexpr const char* kBeacon = "8000 0000 ffffffffffff 0a0b0c0d0e0f 0a0b0c0d0e0f 1000";
constexpr const char* kSsid = "0004 686f6d65";  // the element of "home"
constexpr const char* kEapolKey = "888e 0203 005f 02 008a 0010";
constexpr const char* kWhoHas =
    "ffffffffffff 001122334455 0806 0001 0800 06 04 0001 001122334455 c0a80117 000000000000 "
    "c0a80101";
constexpr const char* kIsAt =
    "001122334455 0a0b0c0d0e0f 0806 0001 0800 06 04 0002 0a0b0c0d0e0f c0a80101 001122334455 "
    "c0a80117";
constexpr const char* kPing =
    "0a0b0c0d0e0f 001122334455 0800 4500 0054 0000 4000 40 01 b755 c0a80117 c0a80101 0800 f7ff "
    "0001 0001";

// The layout of most confirms.
Fapi Confirm(std::uint16_t id, unsigned result_code) {
  return Fapi(id).U16(kVif, result_code).Spares();
}

// The layout of most responses to an indication.
Fapi Response(std::uint16_t id) { return Fapi(id).U16(kVif).Spares(); }

Fapi AddVifReq() { return Fapi(0x2007).U16(kVif).Mac(kPhone).U16(kStation).Mac(kPhone).Spares(); }

// In these signals, bytes 10 and 11 are not printed.
Fapi AddScanReq() {
  return Fapi(0x2005).U16(0, kScan, kFullScan).Mac(kAnybody).U16(kRealTime).Spares().Bulk(kSsid);
}
Fapi AddScanCfm() { return Fapi(0x2105).U16(0, kSuccess, kScan).Spares(); }
Fapi ScanDoneInd() { return Fapi(0x2301).U16(0, kScan).Spares(); }
Fapi ScanInd(unsigned channel_frequency, int rssi) {
  return Fapi(0x2300)
      .U16(kVif, channel_frequency, static_cast<unsigned>(rssi), kScan, 0, 0, 0, 0)
      .Spares()
      .Bulk(kBeacon);
}

Fapi ConnectReq(const char* bssid, unsigned channel_frequency) {
  return Fapi(0x200B).U16(kVif).Mac(bssid).U16(kOpenSystem, channel_frequency).Spares().Bulk(kSsid);
}
Fapi ConnectInd(unsigned result_code) {
  return Fapi(0x2303).U16(kVif, result_code).Spares().Bulk(kSsid);
}
Fapi ProcedureStartedInd(unsigned procedure_type) {
  return Fapi(0x230A).U16(kVif, procedure_type, kPeer).Spares().Bulk(kSsid);
}
Fapi RoamedInd() { return Fapi(0x2307).U16(kVif, 1).Spares().Bulk(kBeacon); }
Fapi DisconnectedInd(const char* peer, unsigned reason_code) {
  return Fapi(0x2309).U16(kVif).Mac(peer).U16(reason_code).Spares();
}

Fapi SetkeysReq(unsigned key_id, unsigned key_type, const char* address) {
  return Fapi(0x2018)
      .U16(kVif, 128, key_id, key_type)
      .Mac(address)
      .Bytes("0100 0000 0000 0000 0000 0000 0000 0000")
      .U32(kCcmp)
      .Spares()
      .Bulk("000102030405060708090a0b0c0d0e0f");
}
Fapi SendEapolReq(unsigned host_tag) {
  return Fapi(0x2010)
      .U16(kVif, host_tag, kIeee8023Frame, kEapolKeyM123, 0)
      .U32(0, 0)
      .Spares()
      .Bulk(kEapolKey);
}
Fapi FrameTransmissionInd(unsigned host_tag) {
  return Fapi(0x230C).U16(kVif, host_tag, kSuccessful).Spares();
}

Fapi UnitdataReq(unsigned host_tag, unsigned priority, const char* frame) {
  return Fapi(0x1000)
      .U16(kVif, host_tag, priority, kPeer, kIeee8023Frame, kInline)
      .Spares()
      .Bulk(frame);
}
Fapi UnitdataCfm(unsigned transmission_status, unsigned host_tag, unsigned sequence_number) {
  return Fapi(0x1100).U16(kVif, transmission_status, host_tag, sequence_number, kPeer).Spares();
}
Fapi UnitdataInd(unsigned sequence_number, unsigned priority, const char* frame) {
  return Fapi(0x1300)
      .U16(kVif, kIeee8023Frame, sequence_number, priority, kPeer, 0, kInline)
      .Spares()
      .Bulk(frame);
}

Fapi StartLinkStatisticsReq() { return Fapi(0x2024).U16(kVif, 128, 1).Spares(); }
Fapi RssiReportInd(const char* bssid, int rssi) {
  return Fapi(0x2312).U16(kVif).Mac(bssid).U16(static_cast<unsigned>(rssi)).Spares();
}
Fapi EventLogInd(unsigned event, const char* timestamp) {
  return Fapi(0x2316).U16(kVif, event).Bytes(timestamp).Spares();
}

// In the layouts of version 14.5.12.
Fapi TxSetParamsReq() {
  return Fapi(0x9007)
      .U16(5180, 0x88A4, 0x0200, 0x0044, 1500)
      .U32(100)
      .U16(1, 0, 20, 2, 0, 4)
      .U8(37)
      .U8(2)
      .U32(0, 0);
}
Fapi TxStartReq() {
  return Fapi(0x9008).U32(1000).U16(1, 0).Mac(kAnybody).Mac(kPhone).Mac(kPhone).U16(1).Spares();
}
Fapi TxReadCfm() {
  return Fapi(0x9105)
      .U16(kSuccess, 1)
      .U32(250, 0)
      .Bytes("4400 4000 f6ff 1a00 1c00 1800 1900 feff")
      .U32(748)
      .Spares();
}
// The confirms of the radio test have no vif.
Fapi TestConfirm(std::uint16_t id) { return Fapi(id).U16(kSuccess).Spares(); }

}  // namespace

Log SessionLog() {
  return Log()
      .Header("14.3.10")
      .TimeRef(kMorning, 4711)
      .Load(12ms)
      .Signal(40ms, AddVifReq())
      .Signal(41ms, Confirm(0x2107, kSuccess))
      // The phone finds its network on two channels and connects to the stronger access
      // point.
      .Signal(100ms, AddScanReq())
      .Signal(101ms, AddScanCfm())
      .Signal(180ms, ScanInd(kChannel6, -48))
      .Signal(310ms, ScanInd(kChannel11, -71))
      .Signal(420ms, ScanDoneInd())
      .Signal(500ms, ConnectReq(kFirstAccessPoint, kChannel6))
      .Signal(501ms, Confirm(0x210B, kSuccess))
      .Signal(503ms, EventLogInd(0x0000, "40e2010000000000"))
      .Signal(540ms, ProcedureStartedInd(kConnectionStarted))
      .Signal(552ms, EventLogInd(0x0002, "f0e2010000000000"))
      .Signal(560ms, ConnectInd(kSuccess))
      .Signal(561ms, Response(0x2200))
      .Signal(570ms, UnitdataInd(0, kContention, kEapolKey))
      .Signal(573ms, SendEapolReq(0x0001))
      .Signal(576ms, FrameTransmissionInd(0x0001))
      .Signal(590ms, SetkeysReq(0, kPairwise, kFirstAccessPoint))
      .Signal(591ms, Confirm(0x2118, kSuccess))
      .Signal(592ms, SetkeysReq(1, kGroup, kAnybody))
      .Signal(593ms, Confirm(0x2118, kSuccess))
      .Signal(2100ms, UnitdataReq(0x0101, kQosUp0, kWhoHas))
      .Signal(2103ms, UnitdataCfm(kSuccessful, 0x0101, 17))
      .Signal(2107ms, UnitdataInd(402, kContention, kIsAt))
      .Signal(2110ms, UnitdataReq(0x0102, kQosUp6, kPing))
      .Signal(2181ms, UnitdataCfm(kRetryLimit, 0x0102, 18))
      .Signal(2182ms, StartLinkStatisticsReq())
      .Signal(2183ms, Confirm(0x2124, kSuccess))
      .Signal(9000ms, RssiReportInd(kFirstAccessPoint, -77))
      // It roams to the other access point and later loses the connection.
      .Signal(9004ms, ProcedureStartedInd(kRoamingStarted))
      .Signal(9090ms, RoamedInd())
      .Signal(9091ms, Response(0x2203))
      .Signal(9094ms, SetkeysReq(0, kPairwise, kSecondAccessPoint))
      .Signal(9095ms, Confirm(0x2118, kSuccess))
      .Signal(42000ms, DisconnectedInd(kSecondAccessPoint, kTimeout))
      .Signal(42010ms, ConnectReq(kSecondAccessPoint, kChannel11))
      .Signal(42011ms, Confirm(0x210B, kHostRequestFailed))
      // Too short for its layout: its line has no end.
      .Signal(42200ms, UnitdataCfm(kSuccessful, 0x0103, 19).PadTo(20))
      // An id that no version has, and an unknown id of the driver side.
      .Signal(42250ms, Fapi(0x1077).PadTo(16))
      .Signal(42260ms, Fapi(0x0042).PadTo(12))
      .Unload(60000ms)
      .Load(64500ms)
      .Header("14.5.12")
      .TimeRef(kAfterReload, 3)
      .Signal(900ms, TxSetParamsReq())
      .Signal(901ms, TestConfirm(0x9102))
      .Signal(910ms, TxStartReq())
      .Signal(911ms, TestConfirm(0x9104))
      .Signal(1500ms, TxReadCfm());
}
