// The tool, with a standard output that records the length of each write in the file
// "pieces", and of each whole line in the file "lines". The banner is left out.
//
// usage: record_pieces LOG

#include <cstdio>
#include <cstdlib>

#include "piece_lengths.h"
#include "tool/run_control.h"

namespace {

struct Recording {
  std::FILE* pieces;
  std::FILE* lines;
  bool has_banner;
  std::size_t line_length;
};

void RecordLength(std::FILE* file, std::size_t length, PieceLength flags) {
  if (length > kMaxPieceLength) std::abort();
  const auto piece = static_cast<PieceLength>(length | flags);
  std::fwrite(&piece, sizeof piece, 1, file);
}

ssize_t RecordPiece(void* cookie, const char* text, std::size_t length) {
  Recording& recording = *static_cast<Recording*>(cookie);
  const bool ends_line = text[length - 1] == '\n';
  if (recording.has_banner) {
    RecordLength(recording.pieces, length, ends_line ? kEndsLine : 0);
    recording.line_length += length;
  }
  if (ends_line) {
    if (recording.has_banner) RecordLength(recording.lines, recording.line_length, kEndsLine);
    recording.has_banner = true;
    recording.line_length = 0;
  }
  return static_cast<ssize_t>(length);
}

}  // namespace

int main(int argc, char** argv) {
  static Recording recording = {std::fopen("pieces", "wb"), std::fopen("lines", "wb"), false, 0};
  if (recording.pieces == nullptr || recording.lines == nullptr) return 1;
  cookie_io_functions_t functions{};
  functions.write = RecordPiece;
  stdout = fopencookie(&recording, "w", functions);
  // Without a buffer, each of the tool's writes is one call of RecordPiece.
  if (stdout == nullptr || std::setvbuf(stdout, nullptr, _IONBF, 0) != 0) return 1;
  return RunLogDecoder(argc, argv);
}
