#ifndef VRKT_CUT_PIECE_H_
#define VRKT_CUT_PIECE_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "hip/hip_signal.h"

// Bytes of a log, and their place in the redacted log, where zeros are at first.
struct Piece {
  SignalSpan bytes;
  std::uint8_t* redacted;

  std::size_t size() const { return bytes.size(); }
  std::uint8_t operator[](std::size_t offset) const { return bytes[offset]; }

  // The bytes must be within the piece.
  Piece Sub(std::size_t offset, std::size_t count) const {
    return {bytes.subspan(offset, count), redacted + offset};
  }
  Piece From(std::size_t offset) const { return Sub(offset, size() - offset); }

  // Keeps bytes, if all of them are within the piece.
  void Keep(std::size_t offset, std::size_t count) const {
    if (offset + count > size()) return;
    std::copy_n(bytes.data() + offset, count, redacted + offset);
  }
  void KeepAll() const { Keep(0, size()); }
  void KeepNothing() const { std::fill_n(redacted, size(), std::uint8_t{0}); }
};

#endif  // VRKT_CUT_PIECE_H_
