// A phone, simulated second by second.
//
// Its owner stays at home, on the way, in an office and in a cafe, walks about there and uses
// the network in different ways. So the signal drifts, frames are lost where it is weak, and
// the phone roams or loses the connection. Firmware answers late or not at all at times.
//
// Each part of the simulation puts records at their times, also some that follow later, such
// as answers. They are taken in the order of time.

#include "session_workload.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string_view>
#include <utility>
#include <vector>

#include "frames.h"
#include "log_builder.h"
#include "named_signal.h"

namespace {

using Time = Log::Time;
// NOLINTNEXTLINE(google-build-using-namespace): units of time
using namespace std::chrono_literals;

constexpr std::uint32_t kStart = 1780297200;  // 2026-06-01 07:00:00 UTC
constexpr std::uint32_t kUptimeAtStart = 37;  // seconds
constexpr Time kClockPeriod = 10min;
constexpr Time kReloadPeriod = 50min;

constexpr unsigned kStation = 1;      // vif
constexpr unsigned kAccessPoint = 2;  // vif, while the phone shares its connection
constexpr unsigned kRouterPeer = 1;   // peer_index
constexpr unsigned kTdlsPeer = 2;     // peer_index

// The firmware reports signal strengths beyond these, in dBm.
constexpr int kLowRssi = -75;
constexpr int kHighRssi = -55;

constexpr std::string_view kPhoneMac = "00:11:22:33:44:55";
constexpr std::string_view kSharedMac = "02:11:22:33:44:55";  // of the phone's access point

constexpr std::string_view kSsids[] = {"home", "office", "cafe"};
constexpr unsigned kNone = 3;  // no network of the owner's

struct AccessPoint {
  std::string bssid;
  std::string ssid;
  unsigned network;  // of kSsids, or kNone
  unsigned channel;
  int position;
};

// Where the owner can be. An access point is heard 100 units away.
struct Place {
  int width;
  unsigned network;
  std::vector<AccessPoint> access_points;
};

std::string FormatMac(std::uint32_t prefix, std::uint32_t number) {
  char text[18];
  std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", prefix >> 16 & 0xFF,
                prefix >> 8 & 0xFF, prefix & 0xFF, number >> 16 & 0xFF, number >> 8 & 0xFF,
                number & 0xFF);
  return text;
}

std::vector<Place> MakePlaces() {
  constexpr unsigned kChannels[] = {1, 36, 6, 44, 11, 100, 13, 149};
  std::vector<Place> places = {
      {90, 0, {}}, {700, kNone, {}}, {260, 1, {}}, {700, kNone, {}}, {60, 2, {}}};
  std::uint32_t number = 0;
  for (Place& place : places) {
    for (int position = 20; position < place.width; position += 55) {
      const bool is_own = place.network != kNone;
      // Neighbours are between the access points.
      for (const bool is_neighbour : {false, true}) {
        ++number;
        const bool known = is_own && !is_neighbour;
        place.access_points.push_back(
            {FormatMac(known ? 0x0A0B0C : 0x3C5A10, 0x101 * number),
             known ? std::string(kSsids[place.network]) : "net-" + std::to_string(number),
             known ? place.network : kNone,
             kChannels[std::size_t{number} * 5 % std::size(kChannels)],
             position + (is_neighbour ? 30 : 0)});
      }
    }
  }
  return places;
}

// In units of 0.5 MHz.
unsigned GetFrequency(unsigned channel) {
  return 2 * (channel == 14 ? 2484 : channel < 14 ? 2407 + 5 * channel : 5000 + 5 * channel);
}

// The two ends of a link that carries data, and what the driver calls the other one.
struct Link {
  unsigned vif;
  unsigned peer;
  Host phone;
  Host other;
};

struct TcpStream {
  Host server;
  unsigned port = 0;
  std::uint32_t sent = 0;
  std::uint32_t received = 0;
  unsigned segments = 0;  // still to be received
};

class Phone {
 public:
  Phone() {
    AddEvent(Record::Kind::kTimeRef);
    Wait(5ms, 20ms);
    AddEvent(Record::Kind::kLoad);
    Start();
  }

  std::string NextRecord() {
    while (pending_.empty() || pending_.begin()->first >= simulated_) SimulateSecond();
    const auto first = pending_.extract(pending_.begin());
    Write(first.key(), first.mapped());
    std::string bytes = log_.bytes();
    log_ = Log();
    return bytes;
  }

 private:
  struct Record {
    enum class Kind : std::uint8_t { kSignal, kTimeRef, kLoad, kUnload } kind;
    std::string payload;
    std::size_t signal_length;
  };

  enum class Use : std::uint8_t { kNothing, kPages, kCall, kVideo };

  // --- Chance ---

  unsigned Below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
  // Once in `limit` calls.
  bool OneIn(unsigned limit) { return Below(limit) == 0; }
  template <typename Value, std::size_t kSize>
  const Value& OneOf(const Value (&values)[kSize]) {
    return values[Below(kSize)];
  }
  Time Between(Time least, Time most) {
    return least + Time(Below(static_cast<unsigned>((most - least).count()) + 1));
  }
  std::string Noise(std::size_t size) {
    std::string bytes;
    while (bytes.size() < size) bytes += ToBytes(static_cast<std::uint32_t>(random_()), 4);
    bytes.resize(size);
    return bytes;
  }

  // --- Records ---

  void Write(Time time, const Record& record) {
    switch (record.kind) {
      case Record::Kind::kSignal:
        log_.Record(time - base_, record.payload, record.signal_length);
        break;
      case Record::Kind::kTimeRef: {
        const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
        base_ = seconds;
        const auto count = static_cast<std::uint32_t>(seconds.count());
        log_.TimeRef(kStart + count, kUptimeAtStart + count, time - base_);
        break;
      }
      case Record::Kind::kLoad:
        log_.Load(time - base_);
        if (std::exchange(unloaded_, false)) log_.Header("14.5.12");
        break;
      case Record::Kind::kUnload:
        log_.Unload(time - base_);
        unloaded_ = true;
        break;
    }
  }

  void AddEvent(Record::Kind kind) { pending_.emplace(now_, Record{kind, "", 0}); }

  void AddAt(Time time, const NamedSignal& signal) {
    pending_.emplace(time, Record{Record::Kind::kSignal, signal.payload(), signal.signal_length()});
  }
  void Add(const NamedSignal& signal) { AddAt(now_, signal); }
  void Wait(Time least, Time most) { now_ += Between(least, most); }

  static NamedSignal Make(std::string_view name, unsigned vif = kStation) {
    NamedSignal signal(name);
    if (signal.Has("vif")) signal.Set("vif", vif);
    return signal;
  }

  // A request and its confirm, which is late or missing at times.
  void Ask(const NamedSignal& request, const NamedSignal& confirm) {
    Add(request);
    if (OneIn(400)) {
      Wait(1000ms, 3000ms);  // lost
      return;
    }
    OneIn(100) ? Wait(200ms, 2500ms) : Wait(1ms, 5ms);
    Add(confirm);
    Wait(0ms, 2ms);
  }
  // As Ask, for a request whose confirm has nothing but a result.
  void Request(const NamedSignal& request, std::string_view confirm, unsigned vif = kStation) {
    Ask(request, Make(confirm, vif));
  }

  void LogEvent(std::string_view event) {
    std::string timestamp;
    const auto microseconds = static_cast<std::uint64_t>(now_.count()) * 1000;
    for (int shift = 0; shift < 64; shift += 8) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02x",
                    static_cast<unsigned>(microseconds >> shift & 0xFF));
      timestamp += digits;
    }
    Add(Make("mlme_event_log_ind").Set("event", event).Set("timestamp", timestamp));
  }

  // --- The driver ---

  void Start() {
    Wait(5ms, 20ms);
    for (unsigned number = 0; number < 3; ++number) {
      Add(Make("debug_word12_ind", 0)
              .Set("module_id", 0x20 + number)
              .Set("timestamp", now_.count() * 1000)
              .Set("sequence_number", ++debug_number_));
      Wait(1ms, 9ms);
    }
    for (int i = 0; i < 12; ++i) SetMib();
    Request(Make("mlme_add_vif_req")
                .Set("interface_address", kPhoneMac)
                .Set("virtual_interface_type", "station")
                .Set("device_address", kPhoneMac),
            "mlme_add_vif_cfm");
    Request(Make("mlme_set_country_req")
                .Set("country_code", 0x4544)
                .Set("dfs_regulatory_domain", "etsi"),
            "mlme_set_country_cfm");
    Request(Make("mlme_set_band_req").Set("band", "auto"), "mlme_set_band_cfm");
    Request(Make("mlme_host_state_req").Set("host_state", 1), "mlme_host_state_cfm");
    Scan("initial_scan");
    next_attempt_ = now_ + 200ms;
    busy_until_ = now_;
    next_reload_ = now_ + kReloadPeriod;
  }

  void Reload() {
    EndLink();
    sharing_until_ = 0ms;
    has_guest_ = false;
    Wait(500ms, 900ms);  // the last answers
    AddEvent(Record::Kind::kUnload);
    Wait(2000ms, 5000ms);
    AddEvent(Record::Kind::kLoad);
    Wait(1ms, 3ms);
    AddEvent(Record::Kind::kTimeRef);
    Start();
  }

  // The variable's number, and its value after its type.
  void SetMib() {
    const std::string variable = ToBytes(2000 + Below(400), 2);
    Ask(Make("mlme_set_req", 0).Bulk(variable + ToBytes(1, 2) + ToBytes(Below(256), 2)),
        Make("mlme_set_cfm", 0).Bulk(variable + ToBytes(0, 2)));
  }
  void GetMib() {
    const std::string variable = ToBytes(2000 + Below(400), 2);
    Ask(Make("mlme_get_req", kStation).Bulk(variable + ToBytes(0, 2)),
        Make("mlme_get_cfm", kStation).Bulk(variable + ToBytes(4, 2) + Noise(4)));
  }

  // --- Places ---

  Place& place() { return places_[place_]; }

  int GetRssi(const AccessPoint& access_point) {
    const int distance = std::abs(access_point.position - position_);
    return std::max(-95, -38 - distance * 6 / 10 - static_cast<int>(Below(6)));
  }

  const AccessPoint* FindBest() {
    const AccessPoint* best = nullptr;
    int best_rssi = -82;
    for (const AccessPoint& candidate : place().access_points) {
      if (candidate.network == kNone) continue;
      const int rssi = GetRssi(candidate);
      if (rssi > best_rssi) {
        best = &candidate;
        best_rssi = rssi;
      }
    }
    return best;
  }

  void Walk() {
    if (simulated_ >= next_place_) {
      place_ = (place_ + 1) % places_.size();
      position_ = 0;
      const bool is_way = place().network == kNone;
      next_place_ = simulated_ + (is_way ? Between(2min, 4min) : Between(9min, 18min));
      target_ = is_way ? place().width : 0;
    }
    if (place().network != kNone && OneIn(45)) {
      target_ = static_cast<int>(Below(static_cast<unsigned>(place().width)));
    }
    position_ += std::clamp(target_ - position_, -3, 3);
    if (simulated_ >= next_use_) {
      constexpr Use kUses[] = {Use::kNothing, Use::kPages, Use::kCall, Use::kCall, Use::kVideo};
      use_ = OneOf(kUses);
      next_use_ = simulated_ + Between(1min, 5min);
      const bool sleeps = use_ == Use::kNothing;
      Request(Make("mlme_powermgt_req")
                  .Set("power_management_mode", sleeps ? "power_save" : "active_mode"),
              "mlme_powermgt_cfm");
      Request(Make("mlme_host_state_req").Set("host_state", sleeps ? 0 : 1), "mlme_host_state_cfm");
    }
  }

  // --- Scans ---

  void Scan(std::string_view type) {
    const unsigned scan = 0x100 + ++scan_number_ % 0x100;
    NamedSignal request = Make("mlme_add_scan_req");
    request.Set("scan_id", scan).Set("scan_type", type).Set("device_address", kPhoneMac);
    request.Set("report_mode_bitmap", "real_time").Bulk(MakeSsidElement(""));
    Ask(request, Make("mlme_add_scan_cfm").Set("scan_id", scan));
    LogEvent("wifi_event_driver_scan_requested");
    const bool is_aborted = OneIn(25);
    unsigned left = is_aborted ? 2 : 100;
    for (const AccessPoint& found : place().access_points) {
      const int rssi = GetRssi(found);
      if (rssi < -90 || left-- == 0) continue;
      Wait(15ms, 90ms);
      Add(Make("mlme_scan_ind")
              .Set("channel_frequency", GetFrequency(found.channel))
              .Set("rssi", rssi)
              .Set("scan_id", scan)
              .Bulk(MakeBeacon(found.bssid, GetBeaconNumber(), found.ssid, found.channel)));
    }
    if (is_aborted) {
      Ask(Make("mlme_del_scan_req").Set("scan_id", scan),
          Make("mlme_del_scan_cfm").Set("scan_id", scan));
      return;
    }
    Wait(40ms, 300ms);
    LogEvent("wifi_event_driver_scan_complete");
    Add(Make("mlme_scan_done_ind").Set("scan_id", scan));
    Wait(1ms, 3ms);
  }

  unsigned GetBeaconNumber() const { return static_cast<unsigned>(now_.count() / 102) & 0xFFF; }

  // --- Connections ---

  AirLink GetAirLink(const AccessPoint& access_point) {
    return {access_point.bssid, kPhoneMac, ++sequence_number_ & 0xFFF};
  }

  Link GetLink() const {
    const std::uint32_t net = 0xC0A80000 | (current_->network + 1) << 8;
    return {kStation, kRouterPeer, {kPhoneMac, net | 23}, {current_->bssid, net | 1}};
  }

  unsigned NextHostTag() { return host_tag_ = host_tag_ % 0xFFFF + 1; }

  void SendFrame(unsigned vif, std::string_view type, const std::string& frame,
                 std::string_view status = "successful") {
    const unsigned tag = NextHostTag();
    const bool is_80211 = type.starts_with("ieee80211");
    Add(Make("mlme_send_frame_req", vif)
            .Set("host_tag", tag)
            .Set("data_unit_descriptor", is_80211 ? "ieee802_11_frame" : "ieee802_3_frame")
            .Set("message_type", type)
            .Bulk(frame));
    Wait(1ms, 2ms);
    Add(Make("mlme_send_frame_cfm", vif).Set("host_tag", tag));
    status == "successful" ? Wait(1ms, 6ms) : Wait(40ms, 90ms);
    Add(Make("mlme_frame_transmission_ind", vif)
            .Set("host_tag", tag)
            .Set("transmission_status", status));
  }

  void ReceiveFrame(const AccessPoint& from, const std::string& frame) {
    Add(Make("mlme_received_frame_ind")
            .Set("data_unit_descriptor", "ieee802_11_frame")
            .Set("channel_frequency", GetFrequency(from.channel))
            .Bulk(frame));
  }

  void Receive(const Link& link, const std::string& frame, unsigned priority = 0) {
    Add(Make("ma_unitdata_ind", link.vif)
            .Set("data_unit_descriptor", "ieee802_3_frame")
            .Set("sequence_number", ++received_number_ & 0xFFF)
            .Set("priority", priority)
            .Set("peer_index", link.peer)
            .Bulk(frame));
  }

  // Returns whether the frame arrived.
  bool Send(const Link& link, const std::string& frame, unsigned priority = 0) {
    const unsigned tag = NextHostTag();
    Add(Make("ma_unitdata_req", link.vif)
            .Set("host_tag", tag)
            .Set("priority", priority)
            .Set("peer_index", link.peer)
            .Set("data_unit_descriptor", "ieee802_3_frame")
            .Bulk(frame));
    const int rssi = link.vif == kStation && current_ != nullptr ? GetRssi(*current_) : -60;
    const bool is_lost = OneIn(rssi < -78 ? 6 : rssi < -70 ? 40 : 1500);
    const Time answered = now_ + (is_lost ? Between(30ms, 120ms) : Between(1ms, 9ms));
    AddAt(answered, Make("ma_unitdata_cfm", link.vif)
                        .Set("transmission_status", !is_lost   ? "successful"
                                                    : OneIn(4) ? "tx_lifetime"
                                                               : "retry_limit")
                        .Set("host_tag", tag)
                        .Set("sequence_number", ++sequence_number_ & 0xFFF)
                        .Set("peer_index", link.peer));
    return !is_lost;
  }

  void SetKey(unsigned vif, unsigned key_id, std::string_view type, std::string_view address) {
    Request(Make("mlme_setkeys_req", vif)
                .Set("length", 128)
                .Set("key_id", key_id)
                .Set("key_type", type)
                .Set("address", address)
                .Set("sequence_number", "0100 0000 0000 0000 0000 0000 0000 0000")
                .Set("cipher_suite_selector", 0x000FAC04)
                .Bulk(Noise(16)),
            "mlme_setkeys_cfm", vif);
  }

  // The phone is the station. With a wrong passphrase its second message has no answer.
  void ShakeHands(const AccessPoint& with, bool is_right) {
    const Link link = {kStation, kRouterPeer, {}, {}};
    const auto message = [&](unsigned number) {
      return MakeEapolKeyFrame(number, with.bssid, kPhoneMac);
    };
    for (int i = 0; i < (is_right ? 1 : 4); ++i) {
      if (i > 0) Wait(990ms, 1010ms);
      Receive(link, message(1));
      Wait(2ms, 9ms);
      SendFrame(kStation, "eapol_key_m123", message(2));
    }
    if (!is_right) return;
    Wait(2ms, 30ms);
    Receive(link, message(3));
    Wait(2ms, 5ms);
    SendFrame(kStation, "eapol_key_m4", message(4));
    SetKey(kStation, 0, "pairwise", with.bssid);
    SetKey(kStation, 1, "group", kBroadcast);
  }

  void GetAddress() {
    const Link link = GetLink();
    for (const bool is_first : {true, false}) {
      SendFrame(kStation, "dhcp",
                MakeDhcpFrame(is_first ? DhcpMessage::kDiscover : DhcpMessage::kRequest, link.phone,
                              link.other));
      Wait(10ms, 200ms);
      Receive(link, MakeDhcpFrame(is_first ? DhcpMessage::kOffer : DhcpMessage::kAck, link.phone,
                                  link.other));
      Wait(1ms, 5ms);
    }
    Request(Make("mlme_set_ip_address_req")
                .Set("ip_version", 4)
                .Set("multicast_address", "01:00:5e:00:00:01")
                .Bulk(std::string{'\xC0', '\xA8', static_cast<char>(current_->network + 1), 23}),
            "mlme_set_ip_address_cfm");
    SendFrame(kStation, "arp", MakeArpRequest(link.phone, link.other.ip));
    Wait(2ms, 8ms);
    Receive(link, MakeArpReply(link.other, link.phone));
  }

  void Connect(const AccessPoint& to) {
    Ask(Make("mlme_set_pmk_req").Bulk(Noise(32)), Make("mlme_set_pmk_cfm"));
    Add(Make("mlme_connect_req")
            .Set("bssid", to.bssid)
            .Set("authentication_type", "open_system")
            .Set("channel_frequency", GetFrequency(to.channel))
            .Bulk(MakeSsidElement(to.ssid) + MakeRsnElement()));
    Wait(1ms, 4ms);
    if (OneIn(30)) {
      Add(Make("mlme_connect_cfm").Set("result_code", "host_request_failed"));
      return;
    }
    Add(Make("mlme_connect_cfm"));
    LogEvent("wifi_event_association_requested");
    const auto fail = [this](std::string_view result, Time time) {
      now_ += time;
      Add(Make("mlme_connect_ind").Set("result_code", result));
      Wait(1ms, 2ms);
      Add(Make("mlme_connect_res"));
    };
    if (OneIn(20)) return fail("probe_timeout", 900ms);
    LogEvent("wifi_event_fw_auth_started");
    if (OneIn(20)) {
      SendFrame(kStation, "ieee80211_mgmt", MakeAuthentication(GetAirLink(to), 1), "retry_limit");
      LogEvent("wifi_event_auth_timeout");
      return fail("auth_timeout", 600ms);
    }
    SendFrame(kStation, "ieee80211_mgmt", MakeAuthentication(GetAirLink(to), 1));
    Wait(2ms, 30ms);
    ReceiveFrame(to, MakeAuthentication(GetAirLink(to), 2));
    LogEvent("wifi_event_auth_complete");
    Wait(2ms, 5ms);
    Add(Make("mlme_procedure_started_ind")
            .Set("procedure_type", "connection_started")
            .Set("association_identifier", 1)
            .Bulk(MakeAssociationRequest(GetAirLink(to), to.ssid)));
    if (OneIn(25)) {
      LogEvent("wifi_event_assoc_timeout");
      return fail("assoc_timeout", 1000ms);
    }
    Wait(4ms, 40ms);
    LogEvent("wifi_event_assoc_complete");
    Add(Make("mlme_connect_ind").Bulk(MakeAssociationResponse(GetAirLink(to), 1)));
    Wait(1ms, 2ms);
    Add(Make("mlme_connect_res"));
    Wait(2ms, 20ms);
    current_ = &to;
    const bool is_right = !OneIn(12);
    ShakeHands(to, is_right);
    if (!is_right) {
      Wait(990ms, 1010ms);
      return Lose("deauthenticated_4_way_handshake_timeout");
    }
    for (const std::string_view direction : {"transmit", "receive"}) {
      Wait(1ms, 20ms);
      Add(Make("ma_blockack_ind")
              .Set("peer_qsta_address", to.bssid)
              .Set("blockack_parameter_set", 0x1003)
              .Set("direction", direction));
    }
    GetAddress();
    Request(Make("mlme_monitor_rssi_req")
                .Set("low_rssi_threshold", kLowRssi)
                .Set("high_rssi_threshold", kHighRssi)
                .Set("rssi_monitoring_enabled", "true"),
            "mlme_monitor_rssi_cfm");
    connected_ = true;
  }

  // What belongs to a connection ends with it.
  void EndLink() {
    current_ = nullptr;
    connected_ = false;
    stream_.segments = 0;
    tdls_until_ = 0ms;
    next_attempt_ = now_ + Between(200ms, 9000ms);
  }

  // The access point or the firmware ends the connection.
  void Lose(std::string_view reason) {
    NamedSignal lost = Make("mlme_disconnected_ind");
    lost.Set("peer_sta_address", current_->bssid).Set("reason_code", reason);
    if (reason.starts_with("deauth")) {
      lost.Bulk(MakeDeauthentication(GetAirLink(*current_), GetReason(lost)));
    }
    Add(lost);
    EndLink();
  }

  static unsigned GetReason(const NamedSignal& signal) {
    return static_cast<std::uint8_t>(signal.payload()[18]);
  }

  // The owner or the phone ends it.
  void Disconnect() {
    Add(Make("mlme_disconnect_req")
            .Set("peer_sta_address", current_->bssid)
            .Set("reason_code", "deauthenticated_leaving"));
    Wait(1ms, 4ms);
    Add(Make("mlme_disconnect_cfm").Set("peer_sta_address", current_->bssid));
    Wait(3ms, 30ms);
    Add(Make("mlme_disconnect_ind").Set("peer_sta_address", current_->bssid));
    EndLink();
  }

  void Roam(const AccessPoint& to) {
    LogEvent("wifi_event_roam_search_started");
    LogEvent("wifi_event_roam_scan_started");
    Wait(60ms, 200ms);
    LogEvent("wifi_event_roam_scan_complete");
    const bool by_host = OneIn(4);
    if (by_host) {
      Add(Make("mlme_roam_req")
              .Set("bssid", to.bssid)
              .Set("channel_frequency", GetFrequency(to.channel)));
      Wait(1ms, 4ms);
      Add(Make("mlme_roam_cfm"));
    }
    Wait(4ms, 9ms);
    const std::string old = current_->bssid;
    if (by_host && OneIn(4)) {
      Wait(300ms, 900ms);
      Add(Make("mlme_roam_ind").Set("result_code", "auth_timeout"));
      return;
    }
    Add(Make("mlme_procedure_started_ind")
            .Set("procedure_type", "roaming_started")
            .Set("association_identifier", 1)
            .Bulk(MakeReassociationRequest(GetAirLink(to), to.ssid, old)));
    Wait(20ms, 70ms);
    LogEvent("wifi_event_roam_assoc_complete");
    if (by_host) Add(Make("mlme_roam_ind"));
    Add(Make("mlme_roamed_ind")
            .Set("temporal_keys_required", "true")
            .Bulk(MakeReassociationResponse(GetAirLink(to), 1)));
    Wait(1ms, 2ms);
    Add(Make("mlme_roamed_res"));
    current_ = &to;
    ShakeHands(to, true);
  }

  void ManageConnection() {
    if (!connected_) {
      if (now_ < next_attempt_) return;
      Scan(OneIn(3) ? "full_scan" : "scheduled_scan");
      const AccessPoint* const best = FindBest();
      next_attempt_ = now_ + Between(2000ms, 20000ms);
      if (best != nullptr) Connect(*best);
      return;
    }
    const int rssi = GetRssi(*current_);
    if (OneIn(4) && (rssi < kLowRssi || rssi > kHighRssi)) {
      Add(Make("mlme_rssi_report_ind").Set("bssid", current_->bssid).Set("rssi", rssi));
    }
    if (place().network != current_->network) {
      return Lose(OneIn(2) ? "synchronisation_loss" : "roaming_failure_link_loss_no_candidate");
    }
    if (rssi < -62) {
      const AccessPoint* const best = FindBest();
      if (best != nullptr && best != current_ && GetRssi(*best) > rssi + 8) return Roam(*best);
    }
    if (OneIn(150)) {
      constexpr std::string_view kReasons[] = {"keep_alive_failure",
                                               "synchronisation_loss",
                                               "unspecified_reason",
                                               "deauthenticated_no_more_stations",
                                               "deauthenticated_invalid_class_3_frame",
                                               "deauthenticated_group_ handshake_timeout"};
      return OneIn(3) ? Disconnect() : Lose(OneOf(kReasons));
    }
    if (OneIn(60)) Scan(use_ == Use::kNothing ? "scheduled_scan" : "full_scan");
    if (OneIn(20)) GetMib();
    if (OneIn(15)) SetMib();
  }

  // --- Data ---

  void OpenPage() {
    const Link link = GetLink();
    constexpr std::string_view kNames[] = {"www.example.org", "img.example.net", "api.example.com"};
    const std::string_view name = OneOf(kNames);
    const std::uint32_t ip = 0xC6336400 | Below(200);  // 198.51.100.0/24, for documents
    const unsigned identifier = Below(0x10000);
    Send(link, MakeDnsQuestion(link.phone, link.other, identifier, name));
    Wait(5ms, 60ms);
    Receive(link, MakeDnsAnswer(link.phone, link.other, identifier, name, ip));
    Wait(1ms, 3ms);
    stream_ = {{link.other.mac, ip},
               0x8000 | Below(0x7000),
               static_cast<std::uint32_t>(random_()),
               static_cast<std::uint32_t>(random_()),
               0};
    SendTcp(kTcpSyn, "");
    Wait(10ms, 60ms);
    ReceiveTcp(kTcpSyn | kTcpAck, "");
    Wait(1ms, 2ms);
    SendTcp(kTcpAck, "");
    SendTcp(kTcpAck | kTcpPush, MakeTlsRecord(180));
  }

  std::string MakeTlsRecord(unsigned size) {
    return FromHex("17 03 03") +
           std::string{static_cast<char>(size >> 8), static_cast<char>(size & 0xFF)} + Noise(size);
  }

  static std::uint32_t CountSequenceNumbers(unsigned flags, std::string_view payload) {
    return static_cast<std::uint32_t>(payload.size()) +
           ((flags & (kTcpSyn | kTcpFin)) != 0 ? 1 : 0);
  }

  // A segment that is lost is sent again.
  void SendTcp(unsigned flags, const std::string& payload) {
    const Link link = GetLink();
    const std::string frame = MakeTcpFrame(
        link.phone, stream_.server,
        {stream_.port, 443, stream_.sent, (flags & kTcpAck) != 0 ? stream_.received : 0, flags},
        payload);
    if (!Send(link, frame)) {
      Wait(150ms, 250ms);
      Send(link, frame);
    }
    stream_.sent += CountSequenceNumbers(flags, payload);
  }
  void ReceiveTcp(unsigned flags, const std::string& payload) {
    const Link link = GetLink();
    Receive(link,
            MakeTcpFrame(stream_.server, link.phone,
                         {443, stream_.port, stream_.received, stream_.sent, flags}, payload));
    stream_.received += CountSequenceNumbers(flags, payload);
  }

  void Transfer(unsigned segments) {
    segments = std::min(segments, stream_.segments);
    if (segments == 0) return;
    const Time step = (simulated_ - now_) / (segments + 1);
    for (; segments > 0; --segments) {
      now_ += step;
      ReceiveTcp(kTcpAck, MakeTlsRecord(OneIn(40) ? 1390 : 40 + Below(60)));
      if (segments % 2 == 0) SendTcp(kTcpAck, "");
      if (OneIn(30)) SendTcp(kTcpAck | kTcpPush, MakeTlsRecord(60 + Below(120)));
      if (--stream_.segments == 0) SendTcp(kTcpAck | kTcpFin, "");
    }
  }

  void Talk() {
    const Link link = GetLink();
    const Host other = {link.other.mac, 0xC6336405};
    for (; now_ < simulated_; now_ += 20ms) {
      const std::string voice = FromHex("8060") + Noise(42);
      Send(link, MakeUdpFrame(link.phone, other, 50004, 50006, voice), 6);
      if (!OneIn(40)) Receive(link, MakeUdpFrame(other, link.phone, 50006, 50004, voice), 6);
    }
  }

  void Doze() {
    const Link link = GetLink();
    Wait(0ms, 400ms);
    if (OneIn(5)) Receive(link, MakeArpRequest(link.other, link.phone.ip + 1 + Below(9)));
    if (OneIn(20)) {
      Send(link, MakePing(link.phone, link.other, ++ping_number_));
    }
  }

  void UseNetwork() {
    switch (use_) {
      case Use::kNothing:
        return Doze();
      case Use::kPages:
        if (stream_.segments == 0 && OneIn(4)) {
          OpenPage();
          stream_.segments = 60 + Below(400);
        }
        return Transfer(60 + Below(120));
      case Use::kCall:
        return Talk();
      case Use::kVideo:
        if (stream_.segments == 0) {
          OpenPage();
          stream_.segments = 3000;
        }
        return OneIn(3) ? Transfer(400 + Below(300)) : Doze();
    }
  }

  // --- Others ---

  // Another device, to which the phone sends without the access point.
  void UseTdls() {
    constexpr std::string_view kTv = "3c:5a:10:aa:00:01";
    const auto tell = [&](std::string_view event, std::string_view reason) {
      Wait(5ms, 40ms);
      Add(Make("mlme_tdls_peer_ind")
              .Set("peer_sta_address", kTv)
              .Set("peer_index", kTdlsPeer)
              .Set("tdls_event", event)
              .Set("reason_code", reason));
      Wait(1ms, 2ms);
      Add(Make("mlme_tdls_peer_res").Set("peer_index", kTdlsPeer).Set("tdls_event", event));
    };
    const auto act = [&](std::string_view action) {
      Request(Make("mlme_tdls_action_req").Set("peer_sta_address", kTv).Set("tdls_action", action),
              "mlme_tdls_action_cfm");
    };
    if (tdls_until_ == 0ms) {
      if (current_->network != 0 || !OneIn(200)) return;
      act("discovery");
      tell("discovered", "reserved");
      act("setup");
      tell("connected", "reserved");
      tdls_until_ = now_ + Between(20s, 60s);
      return;
    }
    const Link link = {kStation, kTdlsPeer, GetLink().phone, {kTv, 0xC0A8010A}};
    for (int i = 0; i < 10; ++i) {
      Send(link, MakeUdpFrame(link.phone, link.other, 40000, 7236, Noise(64)), 5);
      Wait(5ms, 30ms);
    }
    if (now_ < tdls_until_) return;
    act("teardown");
    tell("disconnected", "tdls_teardown_unspecified_reason");
    tdls_until_ = 0ms;
  }

  // --- The phone's own access point ---

  // Starts and stops it, and lets a station come, use it and leave.
  void Share() {
    constexpr std::string_view kGuestMac = "5c:e0:c5:00:00:07";
    const Host self = {kSharedMac, 0xC0A82B01};
    const Link link = {kAccessPoint, kRouterPeer, self, {kGuestMac, 0xC0A82B02}};
    if (sharing_until_ == 0ms) {
      if (!OneIn(1200)) return;
      Request(Make("mlme_add_vif_req", kAccessPoint)
                  .Set("interface_address", kSharedMac)
                  .Set("virtual_interface_type", "ap")
                  .Set("device_address", kSharedMac),
              "mlme_add_vif_cfm", kAccessPoint);
      Request(Make("mlme_start_req", kAccessPoint)
                  .Set("bssid", kSharedMac)
                  .Set("beacon_period", 100)
                  .Set("dtim_period", 2)
                  .Set("capability_information", 0x0431)
                  .Set("channel_frequency", GetFrequency(6))
                  .Bulk(MakeSsidElement("phone") + MakeRsnElement()),
              "mlme_start_cfm", kAccessPoint);
      sharing_until_ = now_ + Between(3min, 7min);
      return;
    }
    if (now_ >= sharing_until_) {
      if (has_guest_) Leave(kGuestMac, "deauthenticated_no_more_stations");
      Request(Make("mlme_del_vif_req", kAccessPoint), "mlme_del_vif_cfm", kAccessPoint);
      sharing_until_ = 0ms;
      return;
    }
    if (!has_guest_) {
      if (OneIn(10)) Welcome(link);
      return;
    }
    for (unsigned i = Below(30); i > 0; --i) {
      Receive(link, MakeUdpFrame(link.other, self, 50100, 443, Noise(40 + Below(30))));
      Wait(1ms, 12ms);
      Send(link, MakeUdpFrame(self, link.other, 443, 50100, Noise(60 + Below(200))));
      Wait(1ms, 12ms);
    }
    if (OneIn(90)) Leave(kGuestMac, OneIn(2) ? "deauthenticated_leaving" : "keep_alive_failure");
  }

  void Welcome(const Link& link) {
    const AirLink air = {kSharedMac, link.other.mac, 1};
    Add(Make("mlme_procedure_started_ind", kAccessPoint)
            .Set("procedure_type", "connection_started")
            .Set("association_identifier", 1)
            .Bulk(MakeAssociationRequest(air, "phone")));
    Wait(3ms, 9ms);
    Add(Make("mlme_connected_ind", kAccessPoint).Set("association_identifier", 1));
    Wait(1ms, 2ms);
    Add(Make("mlme_connected_res", kAccessPoint).Set("association_identifier", 1));
    for (const unsigned message : {1U, 2U, 3U, 4U}) {
      Wait(2ms, 15ms);
      const std::string frame = MakeEapolKeyFrame(message, kSharedMac, link.other.mac);
      if (message % 2 == 1) {
        SendFrame(kAccessPoint, "eapol_key_m123", frame);
      } else {
        Receive(link, frame);
      }
    }
    SetKey(kAccessPoint, 0, "pairwise", link.other.mac);
    has_guest_ = true;
  }

  void Leave(std::string_view guest, std::string_view reason) {
    Add(Make("mlme_disconnected_ind", kAccessPoint)
            .Set("peer_sta_address", guest)
            .Set("reason_code", reason));
    Wait(1ms, 3ms);
    has_guest_ = false;
  }

  void SimulateSecond() {
    now_ = std::max(simulated_, busy_until_);
    simulated_ += 1s;
    if (now_ >= simulated_) return;  // something that takes longer goes on
    if (now_ >= next_clock_) {
      AddEvent(Record::Kind::kTimeRef);
      next_clock_ += kClockPeriod;
    }
    if (now_ >= next_reload_) Reload();
    Walk();
    ManageConnection();
    if (connected_ && now_ < simulated_) UseNetwork();
    if (connected_) UseTdls();
    Share();
    busy_until_ = now_;
  }

  std::mt19937 random_{20260601};
  Log log_ = Log().Header("14.5.12");
  Time base_{};  // of the last clock reference
  bool unloaded_ = false;
  std::multimap<Time, Record> pending_;  // which have the same time are in order
  Time simulated_{};                     // to here, all records are known
  Time now_{};                           // of the record that is added next
  Time busy_until_{};

  std::vector<Place> places_ = MakePlaces();
  std::size_t place_ = 0;
  int position_ = 10;
  int target_ = 10;
  Time next_place_ = 9min;
  Use use_ = Use::kPages;
  Time next_use_ = 2min;
  Time next_clock_ = kClockPeriod;
  Time next_reload_{};

  const AccessPoint* current_ = nullptr;
  bool connected_ = false;
  Time next_attempt_{};
  Time tdls_until_{};
  Time sharing_until_{};
  bool has_guest_ = false;
  TcpStream stream_;

  unsigned scan_number_ = 0;
  unsigned sequence_number_ = 0;
  unsigned received_number_ = 0;
  unsigned host_tag_ = 0;
  unsigned ping_number_ = 0;
  unsigned debug_number_ = 0;
};

}  // namespace

std::function<std::string()> MakeSession() {
  return [phone = std::make_shared<Phone>()] { return phone->NextRecord(); };
}
