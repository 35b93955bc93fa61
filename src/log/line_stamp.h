#ifndef VRKT_LOG_LINE_STAMP_H_
#define VRKT_LOG_LINE_STAMP_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/text_piece.h"
#include "hip/log_item.h"

// Makes the stamps at the start of output lines, as in "2026/11/21-06:23:00.125 ".
//
// Keeps the text of the last second. Logs have many records per second, and a conversion
// to local time costs more than printing a line. Objects of several threads do not
// disturb each other.
class LineStamp {
 public:
  // Returns the stamp in local time. The second is computed in 32 bits, whatever the width of
  // time_t. The text is valid until the next call.
  std::string_view Format(RecordTime time);

 private:
  static constexpr std::string_view kExample = "2026/11/21-06:23:00.125 ";
  static constexpr std::size_t kSecondLength = kExample.find('.') + 1;

  void FormatSecond(std::int32_t second);

  std::optional<std::int32_t> second_;  // any 32-bit value can occur, so none means "none yet"
  TextPiece<kExample.size()> text_;
};

// Prints the stamp of an output line.
void PrintLineStamp(RecordTime time);

#endif  // VRKT_LOG_LINE_STAMP_H_
