#include "intake/line_stamp.h"

#include <cstddef>
#include <ctime>
#include <optional>

#include "base/text_piece.h"

namespace {

constexpr std::size_t kSecondLength = 20;  // of "2026/11/21-06:23:00."

// The last second printed, and its stamp. Logs have many records per second, and a
// conversion to local time costs more than printing a line. Every 32-bit value can
// occur, so no value can mean "none yet".
struct StampedSecond {
  std::optional<std::int32_t> second;
  TextPiece<24> stamp;
};

void FormatSecond(std::int32_t second, TextPiece<24>& stamp) {
  const std::time_t time = second;
  // localtime, unlike localtime_r, checks the time zone at each call.
  const std::tm& local = *std::localtime(&time);
  stamp.Clear();
  // Four digits suffice: 32 bits of seconds cover the years 1901 to 2038.
  stamp.AppendZeroFilled<4>(local.tm_year + 1900);
  stamp.Append('/');
  stamp.AppendZeroFilled<2>(local.tm_mon + 1);
  stamp.Append('/');
  stamp.AppendZeroFilled<2>(local.tm_mday);
  stamp.Append('-');
  stamp.AppendZeroFilled<2>(local.tm_hour);
  stamp.Append(':');
  stamp.AppendZeroFilled<2>(local.tm_min);
  stamp.Append(':');
  stamp.AppendZeroFilled<2>(local.tm_sec);
  stamp.Append('.');
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
    FormatSecond(second, last.stamp);
    last.second = second;
  }
  last.stamp.Truncate(kSecondLength);
  last.stamp.AppendZeroFilled<3>(milliseconds);
  last.stamp.Append(' ');
  last.stamp.Print();
}
