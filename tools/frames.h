#ifndef VRKT_TOOLS_FRAMES_H_
#define VRKT_TOOLS_FRAMES_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Makes complete frames of IEEE 802.11, without the checksum at their end, and of
// Ethernet, with right lengths and checksums. A MAC address is text, as in
// "00:0a:0b:0c:0d:0e".

inline constexpr std::string_view kBroadcast = "ff:ff:ff:ff:ff:ff";

// --- IEEE 802.11 ---

// The two ends of a management frame, and the number that its sender gives it.
struct AirLink {
  std::string_view access_point;
  std::string_view station;
  unsigned sequence_number;
};

std::string MakeSsidElement(std::string_view ssid);
// A network with a passphrase, that is WPA2 with CCMP.
std::string MakeRsnElement();

std::string MakeBeacon(std::string_view access_point, unsigned sequence_number,
                       std::string_view ssid, unsigned channel);
// With an open system, 1 is the station's request and 2 the answer.
std::string MakeAuthentication(const AirLink& link, unsigned transaction);
std::string MakeAssociationRequest(const AirLink& link, std::string_view ssid);
std::string MakeAssociationResponse(const AirLink& link, unsigned association_identifier);
std::string MakeReassociationRequest(const AirLink& link, std::string_view ssid,
                                     std::string_view current_access_point);
std::string MakeReassociationResponse(const AirLink& link, unsigned association_identifier);
// From the access point.
std::string MakeDeauthentication(const AirLink& link, unsigned reason);

// --- Ethernet ---

std::string MakeEthernetFrame(std::string_view to, std::string_view from, unsigned ether_type,
                              std::string_view payload);

// Message 1 to 4 of the WPA2 handshake. Nonces, integrity codes and wrapped keys are
// noise: no passphrase fits them.
std::string MakeEapolKeyFrame(unsigned message, std::string_view access_point,
                              std::string_view station);

struct Host {
  std::string_view mac;
  std::uint32_t ip;
};

inline constexpr Host kEveryHost = {kBroadcast, 0xFFFFFFFF};

std::string MakeArpRequest(const Host& from, std::uint32_t ip);
std::string MakeArpReply(const Host& from, const Host& to);

// The payload has zeros in place of its checksum, which is at `checksum_offset`. The
// checksum covers the addresses, as in UDP and TCP.
std::string MakeIpv4Frame(const Host& from, const Host& to, unsigned protocol, std::string payload,
                          std::size_t checksum_offset);
std::string MakeUdpFrame(const Host& from, const Host& to, unsigned from_port, unsigned to_port,
                         std::string_view payload);
std::string MakePing(const Host& from, const Host& to, unsigned sequence_number);

// What a TCP segment says besides its payload.
struct TcpHeader {
  unsigned from_port;
  unsigned to_port;
  std::uint32_t sequence_number;
  std::uint32_t acknowledged;
  unsigned flags;  // kTcpSyn, ...
};

inline constexpr unsigned kTcpFin = 0x01;
inline constexpr unsigned kTcpSyn = 0x02;
inline constexpr unsigned kTcpPush = 0x08;
inline constexpr unsigned kTcpAck = 0x10;

std::string MakeTcpFrame(const Host& from, const Host& to, const TcpHeader& header,
                         std::string_view payload);

// A question for an address, and the answer to it from the server. `name` is as in
// "www.example.org".
std::string MakeDnsQuestion(const Host& client, const Host& server, unsigned identifier,
                            std::string_view name);
std::string MakeDnsAnswer(const Host& client, const Host& server, unsigned identifier,
                          std::string_view name, std::uint32_t ip);

// The values are those of DHCP's message type.
enum class DhcpMessage : std::uint8_t { kDiscover = 1, kOffer = 2, kRequest = 3, kAck = 5 };

// `client` has the address that the server offers.
std::string MakeDhcpFrame(DhcpMessage message, const Host& client, const Host& server);

#endif  // VRKT_TOOLS_FRAMES_H_
