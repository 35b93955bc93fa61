#ifndef VRKT_LOG_LINE_STAMP_H_
#define VRKT_LOG_LINE_STAMP_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/text_piece.h"

// Makes the stamps at the start of output lines, as in "2026/11/21-06:23:00.125 ".
//
// Keeps the text of the last second. Logs have many records per second, and a conversion
// to local time costs more than printing a line. Objects of several threads do not
// disturb each other.
class LineStamp {
 public:
  // Returns the local time of `timeBase` seconds of Unix time plus `time_word`
  // milliseconds, in 32-bit arithmetic whatever the width of time_t. The text is valid
  // until the next call.
  std::string_view Format(std::uint32_t timeBase, std::int32_t time_word);

 private:
  static constexpr std::string_view kExample = "2026/11/21-06:23:00.125 ";
  static constexpr std::size_t kSecondLength = kExample.find('.') + 1;

  void FormatSecond(std::int32_t second);

  std::optional<std::int32_t> second_;  // any 32-bit value can occur, so none means "none yet"
  TextPiece<kExample.size()> text_;
};

// Returns a record's exact time in milliseconds of Unix time. Its second wraps as the
// stamp's does. It differs from the stamp if the time is negative: -1 ms is in the second
// before the clock reference.
std::int64_t ComputeTimeMs(std::uint32_t timeBase, std::int32_t time_word);

// Prints the stamp of an output line.
void PrintLineStamp(std::uint32_t timeBase, std::int32_t time_word);

#endif  // VRKT_LOG_LINE_STAMP_H_
