// The least that a decoder's reads and writes cost: reads a log with the tool's
// calls, word by word and each payload into one block, and for each record writes
// pieces of given lengths. It decodes nothing, and all pieces come from one constant
// buffer, which stays in the cache. With "pieces" it also calls localtime for each
// new second, as every decoder has to.
//
// usage: floor lines|pieces LOG, with the file of record_pieces of that name

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include "base/little_endian.h"
#include "base/unlocked_stdio.h"
#include "piece_lengths.h"

namespace {

std::uint32_t ReadWord(std::FILE* log) {
  std::uint8_t bytes[4];
  for (std::uint8_t& byte : bytes) {
    const int c = getc_unlocked(log);
    if (c == EOF) std::exit(0);
    byte = static_cast<std::uint8_t>(c);
  }
  return LoadU32(bytes);
}

// Mapped and not read, to leave the copying out of the measurement.
const PieceLength* MapPieces(const char* path) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) std::exit(1);
  void* const pieces = mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ,
                            MAP_PRIVATE | MAP_POPULATE, file, 0);
  if (pieces == MAP_FAILED) std::exit(1);
  close(file);
  return static_cast<const PieceLength*>(pieces);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 1;
  static char text[kMaxPieceLength];
  static char payload[0x10000];
  const bool needs_local_time = std::string_view(argv[1]) == "pieces";
  const PieceLength* piece = MapPieces(argv[1]);
  std::FILE* const log = std::fopen(argv[2], "r");
  if (log == nullptr) return 1;
  for (int i = 0; i < 3; ++i) ReadWord(log);
  std::time_t time_base = 0;
  std::time_t last_second = -1;
  for (;;) {
    const std::uint32_t magic = ReadWord(log);
    const std::uint32_t time = ReadWord(log);
    const std::uint32_t size = ReadWord(log);
    ReadWord(log);
    if (magic == 0x13572467) {
      time_base = ReadWord(log);
      continue;
    }
    if (size > sizeof payload || fread_unlocked(payload, 1, size, log) < size) return 1;
    const std::time_t second = time_base + time / 1000;
    if (needs_local_time && second != last_second) {
      std::localtime(&second);
      last_second = second;
    }
    while ((*piece & kEndsLine) == 0) WriteBytes(text, *piece++, stdout);
    const std::size_t last_piece = *piece++ & kMaxPieceLength;
    if (last_piece == 1) {
      putc_unlocked('\n', stdout);
    } else {
      WriteBytes(text, last_piece, stdout);
    }
  }
}
