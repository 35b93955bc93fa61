#ifndef VRKT_CUT_PSEUDONYMS_H_
#define VRKT_CUT_PSEUDONYMS_H_

#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "piece.h"

// Replaces MAC addresses: the first one by 02:00:00:00:00:01, and so on. An address has the same
// pseudonym throughout. A group address remains one: it begins with 03. Broadcast and zero
// identify nobody and stay.
class Pseudonyms {
 public:
  explicit Pseudonyms(bool keeps_addresses) : keeps_addresses_(keeps_addresses) {}

  // Replaces an address, if all of it is within the piece.
  void Replace(Piece piece, std::size_t offset);

 private:
  bool keeps_addresses_;
  std::unordered_map<std::uint64_t, std::uint64_t> numbers_;
};

#endif  // VRKT_CUT_PSEUDONYMS_H_
