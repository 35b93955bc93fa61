#include "intake/line_stamp.h"

#include <ctime>
#include <optional>

#include "base/text_piece.h"

namespace {

// The second that was stamped last, and its text, as in "2026/11/21-06:23:00.".
// Logs have many records per second, and a conversion to local time costs more
// than a whole line. Every 32-bit value is a second that can occur, so an optional
// marks that there is none yet.
struct StampedSecond {
  std::optional<std::int32_t> second;
  TextPiece<20> text;
};

void FormatSecond(std::int32_t second, TextPiece<20>& text) {
  const std::time_t time = second;
  // localtime and not localtime_r: it follows a change of the system's time zone.
  const std::tm local = *std::localtime(&time);
  text.Clear();
  // 32 bits of seconds cover the years 1901 to 2038.
  text.AppendZeroFilled<4>(local.tm_year + 1900);
  text.Append('/');
  text.AppendZeroFilled<2>(local.tm_mon + 1);
  text.Append('/');
  text.AppendZeroFilled<2>(local.tm_mday);
  text.Append('-');
  text.AppendZeroFilled<2>(local.tm_hour);
  text.Append(':');
  text.AppendZeroFilled<2>(local.tm_min);
  text.Append(':');
  text.AppendZeroFilled<2>(local.tm_sec);
  text.Append('.');
}

}  // namespace

void PrintLineStamp(std::uint32_t timeBase, std::int32_t time_word) {
  static StampedSecond last;
  const std::int32_t seconds = time_word / 1000;
  std::int32_t milliseconds = time_word % 1000;
  // A negative time keeps its own fraction; the seconds are not lowered for it.
  if (milliseconds < 0) milliseconds += 1000;
  const auto second = static_cast<std::int32_t>(timeBase + static_cast<std::uint32_t>(seconds));
  if (last.second != second) {
    FormatSecond(second, last.text);
    last.second = second;
  }
  TextPiece<24> stamp;
  stamp.Append(last.text.text());
  stamp.AppendZeroFilled<3>(milliseconds);
  stamp.Append(' ');
  stamp.Print();
}
