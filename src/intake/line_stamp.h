#ifndef VRKT_INTAKE_LINE_STAMP_H_
#define VRKT_INTAKE_LINE_STAMP_H_

#include <cstdint>
#include <optional>

#include "base/text_piece.h"

// The second that was stamped last, and its text, as in "2026/11/21-06:23:00.".
// Logs have many records in a second, and a conversion to local time costs more
// than a whole line. Any 32-bit value is a second that can occur, so an
// optional tells that there is none yet.
struct StampedSecond {
  std::optional<std::int32_t> second;
  TextPiece<20> text;
};

// Prints the stamp that opens an output line, a blank behind it and no line
// end: the local time of `timeBase` seconds of Unix time plus `time_word`
// milliseconds, in 32-bit arithmetic whatever the host's time type. `last` is
// kept from one line to the next.
void PrintLineStamp(std::uint32_t timeBase, std::int32_t time_word, StampedSecond& last);

#endif  // VRKT_INTAKE_LINE_STAMP_H_
