// What is kept is known to be harmless. A content that is kept must have exactly its size,
// because a longer one could contain anything.

#include "frame_redaction.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "base/little_endian.h"

namespace {

// --- Ethernet ---

constexpr std::size_t kAddressSize = 6;
constexpr std::size_t kEthernetHeaderSize = 14;
constexpr std::size_t kTypeOffset = 12;
constexpr std::size_t kTypeSize = 2;
constexpr std::size_t kEapol = 0x888E;

// Big-endian.
std::size_t LoadNet16(Piece piece, std::size_t offset) {
  return std::size_t{piece[offset]} << 8U | piece[offset + 1];
}

// Of a key frame: its header, the descriptor and the key information; and the length of the key
// data, by which messages 2 and 4 differ. The length is kept only where it follows from the
// frame's. Nonces and integrity codes would allow guessing the passphrase.
void RedactEapol(Piece packet) {
  constexpr std::size_t kHeaderSize = 4;
  constexpr std::uint8_t kLastVersion = 3;
  constexpr std::uint8_t kKey = 3;
  constexpr std::uint8_t kLastType = 8;
  constexpr std::uint8_t kRsnKey = 2;
  constexpr std::uint8_t kWpaKey = 254;
  constexpr std::size_t kIntegrityCodeOffset = 77;
  constexpr std::size_t kIntegrityCodeSizes[] = {0, 16, 24, 32};

  if (packet.size() < kHeaderSize || packet[0] > kLastVersion || packet[1] > kLastType) return;
  const std::size_t size = LoadNet16(packet, 2);
  if (size > packet.size() - kHeaderSize) return;
  packet.Keep(0, kHeaderSize);
  const Piece key = packet.Sub(kHeaderSize, size);
  if (packet[1] != kKey || size == 0 || (key[0] != kRsnKey && key[0] != kWpaKey)) return;
  key.Keep(0, 3);
  for (const std::size_t code_size : kIntegrityCodeSizes) {
    const std::size_t offset = kIntegrityCodeOffset + code_size;
    if (offset + 2 <= size && LoadNet16(key, offset) == size - offset - 2) key.Keep(offset, 2);
  }
}

// What follows the header of a frame of data in IEEE 802.11.
void RedactLlc(Piece packet) {
  constexpr std::uint8_t kSnap[] = {0xAA, 0xAA, 0x03, 0, 0, 0};
  constexpr std::size_t kHeaderSize = std::size(kSnap) + kTypeSize;
  if (packet.size() < kHeaderSize) return;
  if (!std::equal(std::begin(kSnap), std::end(kSnap), packet.bytes.begin())) return;
  packet.Keep(0, kHeaderSize);
  if (LoadNet16(packet, std::size(kSnap)) == kEapol) RedactEapol(packet.From(kHeaderSize));
}

// --- IEEE 802.11 ---

enum FrameType : unsigned { kManagement = 0, kControl = 1, kData = 2 };
enum ManagementSubtype : unsigned {
  kAssociationRequest = 0,
  kAssociationResponse = 1,
  kReassociationRequest = 2,
  kReassociationResponse = 3,
  kProbeRequest = 4,
  kProbeResponse = 5,
  kBeacon = 8,
  kDisassociation = 10,
  kAuthentication = 11,
  kDeauthentication = 12,
  kAction = 13,
  kActionNoAck = 14,
};

// Bits of a frame of data's subtype.
constexpr unsigned kNoData = 4;
constexpr unsigned kQos = 8;

// Flags.
constexpr unsigned kBothSystems = 3;
constexpr unsigned kProtected = 0x40;
constexpr unsigned kHasHtControl = 0x80;

// A suite of ciphers or of ways to authenticate, if it is one of the standard's.
void KeepSuite(Piece suite) {
  constexpr std::uint8_t kStandard[] = {0x00, 0x0F, 0xAC};
  if (std::equal(std::begin(kStandard), std::end(kStandard), suite.bytes.begin())) suite.KeepAll();
}

// Everything but the PMKIDs. The content may end before each of its parts. Returns false if it
// is not well formed.
bool KeepRsn(Piece content) {
  constexpr std::size_t kSuiteSize = 4;
  constexpr std::size_t kPmkidSize = 16;
  std::size_t at = 0;
  const auto has = [&](std::size_t size) { return size <= content.size() - at; };
  const auto keep_suites = [&](std::size_t count) {
    if (!has(count * kSuiteSize)) return false;
    for (; count > 0; --count, at += kSuiteSize) KeepSuite(content.Sub(at, kSuiteSize));
    return true;
  };
  const auto keep_number = [&] {
    content.Keep(at, 2);
    at += 2;
    return LoadU16(content.bytes.data() + at - 2);
  };
  const auto has_ended = [&] { return at == content.size(); };

  if (!has(2) || keep_number() != 1) return false;
  if (has_ended()) return true;
  if (!keep_suites(1)) return false;      // the group's cipher
  for (int list = 0; list < 2; ++list) {  // ciphers, ways to authenticate
    if (has_ended()) return true;
    if (!has(2) || !keep_suites(keep_number())) return false;
  }
  if (has_ended()) return true;
  if (!has(2)) return false;
  keep_number();  // capabilities
  if (has_ended()) return true;
  if (!has(2)) return false;
  const std::size_t pmkids_size = keep_number() * kPmkidSize;
  if (!has(pmkids_size)) return false;
  at += pmkids_size;
  return has_ended() || (keep_suites(1) && has_ended());  // the cipher of management frames
}

void RedactElement(unsigned id, Piece content) {
  constexpr struct {
    unsigned id;
    std::size_t min_size;
    std::size_t max_size;
  } kHarmless[] = {
      {1, 1, 16},     // rates
      {3, 1, 1},      // channel
      {45, 26, 26},   // HT capabilities
      {50, 1, 16},    // more rates
      {61, 22, 22},   // HT operation
      {191, 12, 12},  // VHT capabilities
      {192, 5, 5},    // VHT operation
  };
  constexpr unsigned kRsn = 48;
  if (id == kRsn && !KeepRsn(content)) content.KeepNothing();
  for (const auto& harmless : kHarmless) {
    if (id == harmless.id && content.size() >= harmless.min_size &&
        content.size() <= harmless.max_size) {
      content.KeepAll();
    }
  }
}

// The fixed parameters, without the time stamp of a beacon, and the elements after them.
void RedactManagementBody(unsigned subtype, Piece body, Pseudonyms& pseudonyms) {
  constexpr std::size_t kTimestampSize = 8;
  constexpr std::uint16_t kLastWithElements = 2;  // of algorithms: not SAE
  std::size_t size = 0;
  std::size_t first = 0;
  switch (subtype) {
    case kProbeRequest:
      break;
    case kDisassociation:
    case kDeauthentication:
      size = 2;
      break;
    case kAssociationRequest:
      size = 4;
      break;
    case kReassociationRequest:
      size = 4;
      pseudonyms.Replace(body, size);
      break;
    case kAssociationResponse:
    case kReassociationResponse:
    case kAuthentication:
      size = 6;
      break;
    case kBeacon:
    case kProbeResponse:
      first = kTimestampSize;
      size = 4;
      break;
    case kAction:
    case kActionNoAck:
      body.Keep(0, 2);  // category and action
      return;
    default:
      return;
  }
  body.Keep(first, size);
  std::size_t elements = first + size;
  if (subtype == kReassociationRequest) elements += kAddressSize;
  if (elements > body.size()) return;
  if (subtype == kAuthentication && LoadU16(body.bytes.data()) > kLastWithElements) return;
  RedactElements(body.From(elements));
}

}  // namespace

void RedactEthernet(Piece frame, Pseudonyms& pseudonyms) {
  pseudonyms.Replace(frame, 0);
  pseudonyms.Replace(frame, kAddressSize);
  frame.Keep(kTypeOffset, kTypeSize);
  if (frame.size() < kEthernetHeaderSize) return;
  if (LoadNet16(frame, kTypeOffset) == kEapol) RedactEapol(frame.From(kEthernetHeaderSize));
}

// Each frame has its length in place of the type. All but the last are padded to a multiple of
// four bytes.
void RedactAmsdu(Piece frames, Pseudonyms& pseudonyms) {
  while (frames.size() >= kEthernetHeaderSize) {
    const std::size_t size =
        std::min(kEthernetHeaderSize + LoadNet16(frames, kTypeOffset), frames.size());
    RedactEthernet(frames.Sub(0, size), pseudonyms);
    frames = frames.From(std::min((size + 3) / 4 * 4, frames.size()));
  }
}

void RedactWlan(Piece frame, Pseudonyms& pseudonyms) {
  constexpr std::size_t kHeaderSize = 24;
  constexpr std::size_t kHtControlSize = 4;
  if (frame.size() < 2 || frame[0] % 4 != 0) return;
  const unsigned type = frame[0] / 4U % 4;
  const unsigned subtype = frame[0] / 16U;
  const unsigned flags = frame[1];
  if (type > kData) return;
  frame.Keep(0, 4);  // with the duration
  pseudonyms.Replace(frame, 4);
  pseudonyms.Replace(frame, 10);
  if (type == kControl) return;
  pseudonyms.Replace(frame, 16);
  frame.Keep(22, 2);  // the sequence number
  std::size_t header_size = kHeaderSize;
  const bool has_qos = type == kData && (subtype & kQos) != 0;
  if (type == kData && (flags & kBothSystems) == kBothSystems) {
    pseudonyms.Replace(frame, header_size);
    header_size += kAddressSize;
  }
  if (has_qos) {
    frame.Keep(header_size, 2);
    header_size += 2;
  }
  if ((type == kManagement || has_qos) && (flags & kHasHtControl) != 0) {
    header_size += kHtControlSize;
  }
  if (header_size > frame.size() || (flags & kProtected) != 0) return;
  const Piece body = frame.From(header_size);
  if (type == kManagement) {
    RedactManagementBody(subtype, body, pseudonyms);
  } else if ((subtype & kNoData) == 0) {
    RedactLlc(body);
  }
}

void RedactManagementFrame(Piece frame, Pseudonyms& pseudonyms) {
  if (frame.size() > 0 && frame[0] / 4U % 4 == kManagement) RedactWlan(frame, pseudonyms);
}

void RedactElements(Piece elements) {
  constexpr std::size_t kHeaderSize = 2;
  std::size_t end = 0;
  while (end + kHeaderSize <= elements.size()) end += kHeaderSize + elements[end + 1];
  if (end != elements.size()) return;
  for (std::size_t at = 0; at < end;) {
    elements.Keep(at, kHeaderSize);
    const std::size_t size = elements[at + 1];
    RedactElement(elements[at], elements.Sub(at + kHeaderSize, size));
    at += kHeaderSize + size;
  }
}
