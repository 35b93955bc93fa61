#ifndef VRKT_BASE_UNLOCKED_STDIO_H_
#define VRKT_BASE_UNLOCKED_STDIO_H_

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

// The stream library's calls without its locks. The process has one thread, so the
// locks protect nothing, and locking costs more than printing most pieces. CMake
// checks which unlocked calls the platform has. The standard calls replace missing
// ones.

// Like std::fread with an item size of 1.
inline std::size_t ReadBytes(void* bytes, std::size_t size, std::FILE* stream) {
#ifdef VRKT_HAVE_FREAD_UNLOCKED
#ifdef __GLIBC__
  // What is in the stream's buffer needs no call. getc_unlocked does this for one byte.
  const auto buffered = static_cast<std::size_t>(stream->_IO_read_end - stream->_IO_read_ptr);
  if (size < buffered) {
    std::memcpy(bytes, stream->_IO_read_ptr, size);
    stream->_IO_read_ptr += size;
    return size;
  }
#endif
  return ::fread_unlocked(bytes, 1, size, stream);
#else
  return std::fread(bytes, 1, size, stream);
#endif
}

// Like std::getc.
inline int ReadByte(std::FILE* stream) {
#ifdef VRKT_HAVE_GETC_UNLOCKED
  return getc_unlocked(stream);
#else
  return std::getc(stream);
#endif
}

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

// Ends an output line.
inline void PrintLineEnd() {
#ifdef VRKT_HAVE_PUTC_UNLOCKED
  putc_unlocked('\n', stdout);
#else
  std::putc('\n', stdout);
#endif
}

#endif  // VRKT_BASE_UNLOCKED_STDIO_H_
