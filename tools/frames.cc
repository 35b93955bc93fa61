// Integers are little-endian in IEEE 802.11 (ToBytes) and big-endian elsewhere (ToNet).

#include "frames.h"

#include <algorithm>
#include <random>

#include "log_builder.h"

namespace {

std::string ToNet(std::uint32_t value, std::size_t width) {
  const std::string bytes = ToBytes(value, width);
  return {bytes.rbegin(), bytes.rend()};
}

// Bytes that look random. They depend only on the seed.
std::string MakeNoise(const std::string& seed, std::size_t size) {
  std::seed_seq numbers(seed.begin(), seed.end());
  std::mt19937 random(numbers);
  std::string noise;
  while (noise.size() < size) noise += ToBytes(static_cast<std::uint32_t>(random()), 1);
  return noise;
}

// --- IEEE 802.11 ---

constexpr unsigned kAssociationRequest = 0x00;
constexpr unsigned kAssociationResponse = 0x10;
constexpr unsigned kReassociationRequest = 0x20;
constexpr unsigned kReassociationResponse = 0x30;
constexpr unsigned kBeacon = 0x80;
constexpr unsigned kAuthentication = 0xB0;
constexpr unsigned kDeauthentication = 0xC0;

constexpr unsigned kSuccessful = 0;
// ESS, privacy, short preamble, short slot time.
constexpr unsigned kCapabilities = 0x0431;

std::string MakeElement(unsigned id, std::string_view content) {
  return ToBytes(id, 1) + ToBytes(static_cast<std::uint32_t>(content.size()), 1) +
         std::string(content);
}

// 1, 2, 5.5, 11, 6, 9, 12 and 18 Mbit/s, of which the first four are basic rates.
std::string MakeRates() { return MakeElement(1, FromHex("82 84 8b 96 0c 12 18 24")); }
// 24, 36, 48 and 54 Mbit/s.
std::string MakeExtendedRates() { return MakeElement(50, FromHex("30 48 60 6c")); }

std::string MakeManagementFrame(unsigned subtype, std::string_view to, std::string_view from,
                                std::string_view bssid, unsigned sequence_number,
                                const std::string& body) {
  const unsigned microseconds = to == kBroadcast ? 0 : 314;
  return ToBytes(subtype, 2) + ToBytes(microseconds, 2) + FromHex(to) + FromHex(from) +
         FromHex(bssid) + ToBytes(sequence_number << 4, 2) + body;
}

std::string MakeFrameOfStation(unsigned subtype, const AirLink& link, const std::string& body) {
  return MakeManagementFrame(subtype, link.access_point, link.station, link.access_point,
                             link.sequence_number, body);
}

std::string MakeFrameOfAccessPoint(unsigned subtype, const AirLink& link, const std::string& body) {
  return MakeManagementFrame(subtype, link.station, link.access_point, link.access_point,
                             link.sequence_number, body);
}

std::string MakeRequestBody(const std::string& current_access_point, std::string_view ssid) {
  const unsigned listen_interval = 10;  // beacons
  return ToBytes(kCapabilities, 2) + ToBytes(listen_interval, 2) + current_access_point +
         MakeSsidElement(ssid) + MakeRates() + MakeExtendedRates() + MakeRsnElement();
}

std::string MakeResponseBody(unsigned association_identifier) {
  return ToBytes(kCapabilities, 2) + ToBytes(kSuccessful, 2) +
         ToBytes(0xC000 | association_identifier, 2) + MakeRates() + MakeExtendedRates();
}

// --- Ethernet ---

constexpr unsigned kIpv4 = 0x0800;
constexpr unsigned kArp = 0x0806;
constexpr unsigned kEapol = 0x888E;

constexpr unsigned kIcmp = 1;
constexpr unsigned kTcp = 6;
constexpr unsigned kUdp = 17;

std::uint32_t GetSize(std::string_view bytes) { return static_cast<std::uint32_t>(bytes.size()); }

// The checksum of IPv4, ICMP, UDP and TCP.
std::uint32_t ComputeChecksum(std::string_view bytes) {
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    sum += std::uint32_t{static_cast<std::uint8_t>(bytes[i])} << (i % 2 == 0 ? 8 : 0);
  }
  while (sum > 0xFFFF) sum = (sum & 0xFFFF) + (sum >> 16);
  return ~sum & 0xFFFF;
}

// Stores the checksum of `covered_before` and `bytes`.
void StoreChecksum(const std::string& covered_before, std::string& bytes, std::size_t offset) {
  bytes.replace(offset, 2, ToNet(ComputeChecksum(covered_before + bytes), 2));
}

std::string WrapInIpv4(const Host& from, const Host& to, unsigned protocol,
                       const std::string& payload) {
  std::string header = FromHex("45 00") + ToNet(20 + GetSize(payload), 2) +
                       FromHex("0000 4000 40") + ToNet(protocol, 1) + FromHex("0000") +
                       ToNet(from.ip, 4) + ToNet(to.ip, 4);
  StoreChecksum("", header, 10);
  return MakeEthernetFrame(to.mac, from.mac, kIpv4, header + payload);
}

std::string MakeArpPayload(unsigned operation, const Host& from, const std::string& to_mac,
                           std::uint32_t to_ip) {
  return FromHex("0001 0800 06 04") + ToNet(operation, 2) + FromHex(from.mac) + ToNet(from.ip, 4) +
         to_mac + ToNet(to_ip, 4);
}

constexpr unsigned kDnsPort = 53;

unsigned GetDnsClientPort(unsigned identifier) { return 0xC000 | (identifier & 0x3FFF); }

// For the IPv4 address of the name.
std::string MakeDnsQuestionEntry(std::string_view name) {
  std::string entry;
  while (!name.empty()) {
    const std::string_view label = name.substr(0, name.find('.'));
    entry += ToNet(GetSize(label), 1) + std::string(label);
    name.remove_prefix(std::min(name.size(), label.size() + 1));
  }
  return entry + FromHex("00 0001 0001");
}

}  // namespace

std::string MakeSsidElement(std::string_view ssid) { return MakeElement(0, ssid); }

// Version 1; the group cipher CCMP, one pairwise cipher, CCMP, and one way to
// authenticate, by a pre-shared key; no capabilities.
std::string MakeRsnElement() {
  return MakeElement(48, FromHex("0100 000fac04 0100 000fac04 0100 000fac02 0000"));
}

std::string MakeBeacon(std::string_view access_point, unsigned sequence_number,
                       std::string_view ssid, unsigned channel) {
  const unsigned interval = 100;  // of 1024 microseconds
  const std::string timestamp = ToBytes(interval * 1024 * sequence_number, 8);
  const std::string no_traffic = FromHex("00 01 00 00");
  return MakeManagementFrame(kBeacon, kBroadcast, access_point, access_point, sequence_number,
                             timestamp + ToBytes(interval, 2) + ToBytes(kCapabilities, 2) +
                                 MakeSsidElement(ssid) + MakeRates() +
                                 MakeElement(3, ToBytes(channel, 1)) + MakeElement(5, no_traffic) +
                                 MakeExtendedRates() + MakeRsnElement());
}

std::string MakeAuthentication(const AirLink& link, unsigned transaction) {
  const std::string open_system = ToBytes(0, 2);
  const std::string body = open_system + ToBytes(transaction, 2) + ToBytes(kSuccessful, 2);
  return transaction == 1 ? MakeFrameOfStation(kAuthentication, link, body)
                          : MakeFrameOfAccessPoint(kAuthentication, link, body);
}

std::string MakeAssociationRequest(const AirLink& link, std::string_view ssid) {
  return MakeFrameOfStation(kAssociationRequest, link, MakeRequestBody("", ssid));
}

std::string MakeAssociationResponse(const AirLink& link, unsigned association_identifier) {
  return MakeFrameOfAccessPoint(kAssociationResponse, link,
                                MakeResponseBody(association_identifier));
}

std::string MakeReassociationRequest(const AirLink& link, std::string_view ssid,
                                     std::string_view current_access_point) {
  return MakeFrameOfStation(kReassociationRequest, link,
                            MakeRequestBody(FromHex(current_access_point), ssid));
}

std::string MakeReassociationResponse(const AirLink& link, unsigned association_identifier) {
  return MakeFrameOfAccessPoint(kReassociationResponse, link,
                                MakeResponseBody(association_identifier));
}

std::string MakeDeauthentication(const AirLink& link, unsigned reason) {
  return MakeFrameOfAccessPoint(kDeauthentication, link, ToBytes(reason, 2));
}

std::string MakeEthernetFrame(std::string_view to, std::string_view from, unsigned ether_type,
                              std::string_view payload) {
  return FromHex(to) + FromHex(from) + ToNet(ether_type, 2) + std::string(payload);
}

std::string MakeEapolKeyFrame(unsigned message, std::string_view access_point,
                              std::string_view station) {
  const std::string seed = std::string(access_point) + ' ' + std::string(station);
  const std::string access_point_nonce = MakeNoise("access point " + seed, 32);
  // The station's elements; the access point's elements and the group key, wrapped.
  const std::string group_key = MakeNoise("group key " + seed, 56);
  const std::string packet_number = ToBytes(1, 8);
  const std::string zeros(32, '\0');
  const struct {
    unsigned information;
    unsigned key_length;
    unsigned replay_counter;
    std::string nonce;
    std::string group_packet_number;
    std::string data;
  } kMessages[] = {
      {0x008A, 16, 1, access_point_nonce, zeros.substr(0, 8), ""},
      {0x010A, 0, 1, MakeNoise("station " + seed, 32), zeros.substr(0, 8), MakeRsnElement()},
      {0x13CA, 16, 2, access_point_nonce, packet_number, group_key},
      {0x030A, 0, 2, zeros, zeros.substr(0, 8), ""},
  };
  const auto& m = kMessages[message - 1];
  const unsigned rsn_key = 2;
  // Message 1 cannot have an integrity code, because the station's nonce is not known yet.
  const std::string integrity_code =
      message == 1 ? zeros.substr(0, 16) : MakeNoise(std::to_string(message) + seed, 16);
  const std::string key = ToNet(rsn_key, 1) + ToNet(m.information, 2) + ToNet(m.key_length, 2) +
                          ToNet(0, 4) + ToNet(m.replay_counter, 4) + m.nonce + zeros.substr(0, 16) +
                          m.group_packet_number + zeros.substr(0, 8) + integrity_code +
                          ToNet(GetSize(m.data), 2) + m.data;
  const std::string payload = FromHex("02 03") + ToNet(GetSize(key), 2) + key;
  return message % 2 == 1 ? MakeEthernetFrame(station, access_point, kEapol, payload)
                          : MakeEthernetFrame(access_point, station, kEapol, payload);
}

std::string MakeArpRequest(const Host& from, std::uint32_t ip) {
  const std::string unknown(6, '\0');
  return MakeEthernetFrame(kBroadcast, from.mac, kArp, MakeArpPayload(1, from, unknown, ip));
}

std::string MakeArpReply(const Host& from, const Host& to) {
  return MakeEthernetFrame(to.mac, from.mac, kArp, MakeArpPayload(2, from, FromHex(to.mac), to.ip));
}

std::string MakeIpv4Frame(const Host& from, const Host& to, unsigned protocol, std::string payload,
                          std::size_t checksum_offset) {
  const std::string pseudo_header =
      ToNet(from.ip, 4) + ToNet(to.ip, 4) + ToNet(protocol, 2) + ToNet(GetSize(payload), 2);
  StoreChecksum(pseudo_header, payload, checksum_offset);
  return WrapInIpv4(from, to, protocol, payload);
}

std::string MakeUdpFrame(const Host& from, const Host& to, unsigned from_port, unsigned to_port,
                         std::string_view payload) {
  const std::string header = ToNet(from_port, 2) + ToNet(to_port, 2) +
                             ToNet(8 + GetSize(payload), 2) + std::string(2, '\0');
  return MakeIpv4Frame(from, to, kUdp, header + std::string(payload), 6);
}

std::string MakeTcpFrame(const Host& from, const Host& to, const TcpHeader& header,
                         std::string_view payload) {
  const unsigned window = 0xFFFF;
  return MakeIpv4Frame(from, to, kTcp,
                       ToNet(header.from_port, 2) + ToNet(header.to_port, 2) +
                           ToNet(header.sequence_number, 4) + ToNet(header.acknowledged, 4) +
                           ToNet(0x50, 1) + ToNet(header.flags, 1) + ToNet(window, 2) +
                           ToNet(0, 4) + std::string(payload),
                       16);
}

std::string MakeDnsQuestion(const Host& client, const Host& server, unsigned identifier,
                            std::string_view name) {
  return MakeUdpFrame(
      client, server, GetDnsClientPort(identifier), kDnsPort,
      ToNet(identifier, 2) + FromHex("0100 0001 0000 0000 0000") + MakeDnsQuestionEntry(name));
}

std::string MakeDnsAnswer(const Host& client, const Host& server, unsigned identifier,
                          std::string_view name, std::uint32_t ip) {
  const unsigned lifetime = 300;  // seconds
  return MakeUdpFrame(server, client, kDnsPort, GetDnsClientPort(identifier),
                      ToNet(identifier, 2) + FromHex("8180 0001 0001 0000 0000") +
                          MakeDnsQuestionEntry(name) + FromHex("c00c 0001 0001") +
                          ToNet(lifetime, 4) + FromHex("0004") + ToNet(ip, 4));
}

std::string MakePing(const Host& from, const Host& to, unsigned sequence_number) {
  const unsigned identifier = 1;
  std::string echo = FromHex("08 00 0000") + ToNet(identifier, 2) + ToNet(sequence_number, 2);
  for (std::uint32_t byte = 0; byte < 56; ++byte) echo += ToNet(byte, 1);
  StoreChecksum("", echo, 2);
  return WrapInIpv4(from, to, kIcmp, echo);
}

std::string MakeDhcpFrame(DhcpMessage message, const Host& client, const Host& server) {
  constexpr unsigned kServerPort = 67;
  constexpr unsigned kClientPort = 68;
  const bool is_reply = message == DhcpMessage::kOffer || message == DhcpMessage::kAck;
  const auto address = [](std::uint32_t ip) { return ToNet(ip, 4); };

  std::string options =
      FromHex("63825363") + MakeElement(53, ToNet(static_cast<std::uint32_t>(message), 1));
  if (message == DhcpMessage::kRequest) options += MakeElement(50, address(client.ip));
  if (message != DhcpMessage::kDiscover) options += MakeElement(54, address(server.ip));
  if (is_reply) {
    options += MakeElement(51, ToNet(86400, 4)) +     // the lease, in seconds
               MakeElement(1, address(0xFFFFFF00)) +  // the network's mask
               MakeElement(3, address(server.ip)) +   // router
               MakeElement(6, address(server.ip));    // name server
  } else {
    options += MakeElement(61, "\x01" + FromHex(client.mac)) +  // the client's identity
               MakeElement(12, "phone") +                       // its name
               MakeElement(55, FromHex("01 03 06"));            // the options that it asks for
  }
  options += '\xFF';

  const std::string host_mac = FromHex(client.mac);
  std::string payload = ToNet(is_reply ? 2 : 1, 1) + FromHex("01 06 00") +  // Ethernet
                        ToNet(0x2A2B2C2D, 4) +                              // transaction
                        ToNet(0, 4) + ToNet(0, 4) +  // the client has no address yet
                        address(is_reply ? client.ip : 0) + address(is_reply ? server.ip : 0) +
                        ToNet(0, 4) + host_mac + std::string(10 + 64 + 128, '\0') + options;
  payload.resize(std::max<std::size_t>(payload.size(), 300), '\0');  // the least of BOOTP
  return is_reply ? MakeUdpFrame(server, client, kServerPort, kClientPort, payload)
                  : MakeUdpFrame({client.mac, 0}, kEveryHost, kClientPort, kServerPort, payload);
}
