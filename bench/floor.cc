// What no decoder can do without: reads a log as the tool does, through the same
// stream library, word by word and with a heap block for each record, and writes
// lines as long as the tool's, from one constant buffer. Decodes nothing.
//
// usage: floor LOG LENGTHS, where LENGTHS holds a word of the host for each line

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

std::uint32_t ReadWord(std::FILE* log) {
  std::uint8_t bytes[4];
  if (std::fread(bytes, 1, 4, log) < 4) std::exit(0);
  return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
         static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

std::vector<std::uint32_t> ReadLengths(const char* path) {
  std::FILE* const file = std::fopen(path, "r");
  if (file == nullptr) std::exit(1);
  std::fseek(file, 0, SEEK_END);
  std::vector<std::uint32_t> lengths(static_cast<std::size_t>(std::ftell(file)) / 4);
  std::rewind(file);
  if (std::fread(lengths.data(), 4, lengths.size(), file) < lengths.size()) std::exit(1);
  std::fclose(file);
  return lengths;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 1;
  const std::vector<std::uint32_t> lengths = ReadLengths(argv[2]);
  const std::vector<char> line(1 << 20, 'x');
  std::FILE* const log = std::fopen(argv[1], "r");
  if (log == nullptr) return 1;
  for (int i = 0; i < 3; ++i) ReadWord(log);
  for (auto length = lengths.begin();;) {
    const std::uint32_t magic = ReadWord(log);
    ReadWord(log);
    const std::uint32_t size = ReadWord(log);
    const std::uint32_t last = ReadWord(log);
    if (magic == 0x13572467) {
      for (std::uint32_t i = 0; i < last; i += 4) ReadWord(log);
      continue;
    }
    void* const block = std::malloc(size);
    if (std::fread(block, 1, size, log) < size) return 1;
    std::fwrite(line.data(), 1, *length++, stdout);
    std::free(block);
  }
}
