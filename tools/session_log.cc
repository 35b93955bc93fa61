// A typical session: a phone scans, connects, sets keys, gets an address, exchanges frames,
// roams, loses the network and fails to reconnect. Then the driver is reloaded with a later
// HIP version and runs a radio test.

#include "session_log.h"

#include <string>
#include <string_view>

#include "frames.h"

namespace {

constexpr std::uint32_t kMorning = 1780297200;  // 2026-06-01 07:00:00 UTC
constexpr std::uint32_t kAfterReload = kMorning + 65;

constexpr unsigned kVif = 1;
constexpr unsigned kScan = 1;
constexpr unsigned kPeer = 1;  // the access point's index, and the phone's association

constexpr const char* kPhone = "00:11:22:33:44:55";
constexpr const char* kSsid = "home";

struct AccessPoint {
  const char* bssid;
  unsigned channel;
};

constexpr AccessPoint kFirst = {"0a:0b:0c:0d:0e:0f", 6};
constexpr AccessPoint kSecond = {"0a:0b:0c:0d:0e:1f", 11};

constexpr Host kPhoneHost = {kPhone, 0xC0A80117};     // 192.168.1.23
constexpr Host kRouter = {kFirst.bssid, 0xC0A80101};  // 192.168.1.1, also the DHCP server

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
constexpr unsigned kIeee80211Frame = 0;
constexpr unsigned kIeee8023Frame = 1;
constexpr unsigned kInline = 0;
constexpr unsigned kSuccessful = 0;
constexpr unsigned kRetryLimit = 1;
constexpr unsigned kEapolKeyM123 = 2;
constexpr unsigned kEapolKeyM4 = 3;
constexpr unsigned kDhcp = 5;
constexpr unsigned kIeee80211Mgmt = 0x11;
constexpr unsigned kInactivity = 4;
constexpr unsigned kTimeout = 0x27;
constexpr unsigned kHostRequestFailed = 0x800C;

constexpr std::uint32_t kCcmp = 0x000FAC04;  // a cipher suite of IEEE 802.11

// In units of 0.5 MHz.
constexpr unsigned GetFrequency(unsigned channel) { return 2 * (2407 + 5 * channel); }

// The layout of most confirms.
Fapi Confirm(std::uint16_t id, unsigned result_code) {
  return Fapi(id).U16(kVif, result_code).Spares();
}

// The layout of most responses to an indication.
Fapi Response(std::uint16_t id) { return Fapi(id).U16(kVif).Spares(); }

Fapi AddVifReq() { return Fapi(0x2007).U16(kVif).Mac(kPhone).U16(kStation).Mac(kPhone).Spares(); }

// In these signals, bytes 10 and 11 are not printed.
Fapi AddScanReq() {
  return Fapi(0x2005)
      .U16(0, kScan, kFullScan)
      .Mac(kBroadcast)
      .U16(kRealTime)
      .Spares()
      .BulkBytes(MakeSsidElement(kSsid));
}
Fapi AddScanCfm() { return Fapi(0x2105).U16(0, kSuccess, kScan).Spares(); }
Fapi ScanDoneInd() { return Fapi(0x2301).U16(0, kScan).Spares(); }
Fapi ScanInd(const AccessPoint& access_point, int rssi, unsigned sequence_number) {
  return Fapi(0x2300)
      .U16(kVif, GetFrequency(access_point.channel), static_cast<unsigned>(rssi), kScan, 0, 0, 0, 0)
      .Spares()
      .BulkBytes(MakeBeacon(access_point.bssid, sequence_number, kSsid, access_point.channel));
}

Fapi ConnectReq(const AccessPoint& access_point) {
  return Fapi(0x200B)
      .U16(kVif)
      .Mac(access_point.bssid)
      .U16(kOpenSystem, GetFrequency(access_point.channel))
      .Spares()
      .BulkBytes(MakeSsidElement(kSsid) + MakeRsnElement());
}
Fapi ConnectInd(unsigned result_code, const std::string& response) {
  return Fapi(0x2303).U16(kVif, result_code).Spares().BulkBytes(response);
}
Fapi ProcedureStartedInd(unsigned procedure_type, const std::string& request) {
  return Fapi(0x230A).U16(kVif, procedure_type, kPeer).Spares().BulkBytes(request);
}
Fapi RoamedInd(const std::string& response) {
  return Fapi(0x2307).U16(kVif, 1).Spares().BulkBytes(response);
}
Fapi DisconnectedInd(const char* peer, unsigned reason_code) {
  return Fapi(0x2309).U16(kVif).Mac(peer).U16(reason_code).Spares();
}

Fapi SetkeysReq(unsigned key_id, unsigned key_type, std::string_view address) {
  return Fapi(0x2018)
      .U16(kVif, 128, key_id, key_type)
      .Mac(address)
      .Bytes("0100 0000 0000 0000 0000 0000 0000 0000")
      .U32(kCcmp)
      .Spares()
      .Bulk("000102030405060708090a0b0c0d0e0f");
}

Fapi SendFrameReq(unsigned host_tag, unsigned message_type, const std::string& frame) {
  const bool is_80211 = message_type == kIeee80211Mgmt;
  return Fapi(0x2010)
      .U16(kVif, host_tag, is_80211 ? kIeee80211Frame : kIeee8023Frame, message_type,
           is_80211 ? GetFrequency(kFirst.channel) : 0)
      .U32(0, 0)
      .Spares()
      .BulkBytes(frame);
}
Fapi SendFrameCfm(unsigned host_tag) { return Fapi(0x2110).U16(kVif, host_tag, kSuccess).Spares(); }
Fapi FrameTransmissionInd(unsigned host_tag) {
  return Fapi(0x230C).U16(kVif, host_tag, kSuccessful).Spares();
}
Fapi ReceivedFrameInd(const AccessPoint& access_point, const std::string& frame) {
  return Fapi(0x230D)
      .U16(kVif, kIeee80211Frame, GetFrequency(access_point.channel))
      .Spares()
      .BulkBytes(frame);
}

Fapi UnitdataReq(unsigned host_tag, unsigned priority, const std::string& frame) {
  return Fapi(0x1000)
      .U16(kVif, host_tag, priority, kPeer, kIeee8023Frame, kInline)
      .Spares()
      .BulkBytes(frame);
}
Fapi UnitdataCfm(unsigned transmission_status, unsigned host_tag, unsigned sequence_number) {
  return Fapi(0x1100).U16(kVif, transmission_status, host_tag, sequence_number, kPeer).Spares();
}
Fapi UnitdataInd(unsigned sequence_number, const std::string& frame) {
  return Fapi(0x1300)
      .U16(kVif, kIeee8023Frame, sequence_number, kContention, kPeer, 0, kInline)
      .Spares()
      .BulkBytes(frame);
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
  return Fapi(0x9008).U32(1000).U16(1, 0).Mac(kBroadcast).Mac(kPhone).Mac(kPhone).U16(1).Spares();
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

// A frame that the phone sends, up to its transmission.
void AddSentFrame(Log& log, Log::Time time, unsigned host_tag, unsigned message_type,
                  const std::string& frame) {
  log.Signal(time, SendFrameReq(host_tag, message_type, frame))
      .Signal(time + 1ms, SendFrameCfm(host_tag))
      .Signal(time + 3ms, FrameTransmissionInd(host_tag));
}

// The handshake that both sides derive keys from. It takes 16 ms and two host tags.
void AddHandshake(Log& log, Log::Time time, const AccessPoint& access_point, unsigned host_tag) {
  const auto make_message = [&](unsigned number) {
    return MakeEapolKeyFrame(number, access_point.bssid, kPhone);
  };
  log.Signal(time, UnitdataInd(0, make_message(1)));
  AddSentFrame(log, time + 3ms, host_tag, kEapolKeyM123, make_message(2));
  log.Signal(time + 10ms, UnitdataInd(1, make_message(3)));
  AddSentFrame(log, time + 13ms, host_tag + 1, kEapolKeyM4, make_message(4));
}

}  // namespace

Log SessionLog() {
  Log log;
  log.Header("14.3.10")
      .TimeRef(kMorning, 4711)
      .Load(12ms)
      .Signal(40ms, AddVifReq())
      .Signal(41ms, Confirm(0x2107, kSuccess))
      // The phone finds its network on two channels and connects to the stronger access
      // point.
      .Signal(100ms, AddScanReq())
      .Signal(101ms, AddScanCfm())
      .Signal(180ms, ScanInd(kFirst, -48, 2801))
      .Signal(310ms, ScanInd(kSecond, -71, 911))
      .Signal(420ms, ScanDoneInd())
      .Signal(500ms, ConnectReq(kFirst))
      .Signal(501ms, Confirm(0x210B, kSuccess))
      .Signal(503ms, EventLogInd(0x0000, "40e2010000000000"));
  AddSentFrame(log, 510ms, 0x0001, kIeee80211Mgmt,
               MakeAuthentication({kFirst.bssid, kPhone, 0}, 1));
  log.Signal(520ms, ReceivedFrameInd(kFirst, MakeAuthentication({kFirst.bssid, kPhone, 2806}, 2)))
      .Signal(540ms, ProcedureStartedInd(kConnectionStarted,
                                         MakeAssociationRequest({kFirst.bssid, kPhone, 1}, kSsid)))
      .Signal(552ms, EventLogInd(0x0002, "f0e2010000000000"))
      .Signal(560ms,
              ConnectInd(kSuccess, MakeAssociationResponse({kFirst.bssid, kPhone, 2807}, kPeer)))
      .Signal(561ms, Response(0x2200));
  AddHandshake(log, 570ms, kFirst, 0x0002);
  log.Signal(590ms, SetkeysReq(0, kPairwise, kFirst.bssid))
      .Signal(591ms, Confirm(0x2118, kSuccess))
      .Signal(592ms, SetkeysReq(1, kGroup, kBroadcast))
      .Signal(593ms, Confirm(0x2118, kSuccess));
  AddSentFrame(log, 700ms, 0x0004, kDhcp,
               MakeDhcpFrame(DhcpMessage::kDiscover, kPhoneHost, kRouter));
  log.Signal(731ms, UnitdataInd(400, MakeDhcpFrame(DhcpMessage::kOffer, kPhoneHost, kRouter)));
  AddSentFrame(log, 740ms, 0x0005, kDhcp,
               MakeDhcpFrame(DhcpMessage::kRequest, kPhoneHost, kRouter));
  log.Signal(768ms, UnitdataInd(401, MakeDhcpFrame(DhcpMessage::kAck, kPhoneHost, kRouter)))
      .Signal(2100ms, UnitdataReq(0x0101, kQosUp0, MakeArpRequest(kPhoneHost, kRouter.ip)))
      .Signal(2103ms, UnitdataCfm(kSuccessful, 0x0101, 17))
      .Signal(2107ms, UnitdataInd(402, MakeArpReply(kRouter, kPhoneHost)))
      .Signal(2110ms, UnitdataReq(0x0102, kQosUp6, MakePing(kPhoneHost, kRouter, 1)))
      .Signal(2181ms, UnitdataCfm(kRetryLimit, 0x0102, 18))
      .Signal(2182ms, StartLinkStatisticsReq())
      .Signal(2183ms, Confirm(0x2124, kSuccess))
      .Signal(9000ms, RssiReportInd(kFirst.bssid, -77))
      // It roams to the other access point and later loses the connection.
      .Signal(9004ms, ProcedureStartedInd(kRoamingStarted,
                                          MakeReassociationRequest({kSecond.bssid, kPhone, 2},
                                                                   kSsid, kFirst.bssid)))
      .Signal(9060ms, RoamedInd(MakeReassociationResponse({kSecond.bssid, kPhone, 1007}, kPeer)))
      .Signal(9061ms, Response(0x2203));
  AddHandshake(log, 9070ms, kSecond, 0x0006);
  log.Signal(9094ms, SetkeysReq(0, kPairwise, kSecond.bssid))
      .Signal(9095ms, Confirm(0x2118, kSuccess))
      .Signal(41990ms, ReceivedFrameInd(kSecond, MakeDeauthentication({kSecond.bssid, kPhone, 1390},
                                                                      kInactivity)))
      .Signal(42000ms, DisconnectedInd(kSecond.bssid, kTimeout))
      .Signal(42010ms, ConnectReq(kSecond))
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
  return log;
}
