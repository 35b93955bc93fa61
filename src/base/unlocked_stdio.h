#ifndef VRKT_BASE_UNLOCKED_STDIO_H_
#define VRKT_BASE_UNLOCKED_STDIO_H_

#include <cstddef>
#include <cstdio>
#include <string_view>

// The stream library's output calls without its locks, for programs with one thread: the locks
// protect nothing, and locking costs more than printing most pieces. Where the platform has no
// unlocked call, the standard call replaces it.

// Like std::fwrite with an item size of 1. The result is ignored on purpose: a full
// disk or a closed output does not end the run.
inline void WriteBytes(const void* bytes, std::size_t size, std::FILE* stream) {
#ifdef VRKT_HAVE_FWRITE_UNLOCKED
  static_cast<void>(::fwrite_unlocked(bytes, 1, size, stream));
#else
  static_cast<void>(std::fwrite(bytes, 1, size, stream));
#endif
}

// Prints a piece of an output line to standard output.
inline void PrintPiece(std::string_view piece) { WriteBytes(piece.data(), piece.size(), stdout); }

#endif  // VRKT_BASE_UNLOCKED_STDIO_H_
