#include "intake/line_stamp.h"

#include <ctime>
#include <optional>

#include "base/text_piece.h"

namespace {

// The last second printed and its text, as in "2026/11/21-06:23:00.". Logs have many
// records per second, and a conversion to local time costs more than printing a
// line. Every 32-bit value can occur, so no value can mean "none yet".
struct StampedSecond {
  std::optional<std::int32_t> second;
  TextPiece<24> text;
};

void FormatSecond(std::int32_t second, TextPiece<24>& text) {
  const std::time_t time = second;
  // localtime, unlike localtime_r, checks the time zone at each call.
  const std::tm local = *std::localtime(&time);
  text.Clear();
  // Four digits suffice: 32 bits of seconds cover the years 1901 to 2038.
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
  // The fraction of a negative time becomes positive, but the seconds do not
  // decrease. Intended: -1 ms prints as .999 of the time base's second.
  if (milliseconds < 0) milliseconds += 1000;
  const auto second = static_cast<std::int32_t>(timeBase + static_cast<std::uint32_t>(seconds));
  if (last.second != second) {
    FormatSecond(second, last.text);
    last.second = second;
  }
  TextPiece<24> stamp = last.text;
  stamp.AppendZeroFilled<3>(milliseconds);
  stamp.Append(' ');
  stamp.Print();
}
