#include "hip/signal_decoder.h"

#include "base/unlocked_stdio.h"
#include "hip/record.h"

std::uint32_t DecodeHipSignal(HipVersionTag version, const HipSignal& signal) {
  const Record record = UnderstandSignal(version, signal);
  if (record.kind == Record::Kind::kTooShort) return 0;
  LinePiece piece;
  RenderRecord(record, piece, PrintPiece);
  piece.Append('\n');
  PrintPiece(piece.text());
  return record.kind == Record::Kind::kSignal ? 1 : 0;
}
