#ifndef VRKT_BENCH_PIECE_LENGTHS_H_
#define VRKT_BENCH_PIECE_LENGTHS_H_

#include <cstdint>

// The length of one write to standard output, with a bit for the last of a line. In
// the machine's byte order.
using PieceLength = std::uint16_t;
inline constexpr PieceLength kEndsLine = 0x8000;
inline constexpr PieceLength kMaxPieceLength = 0x7FFF;

#endif  // VRKT_BENCH_PIECE_LENGTHS_H_
