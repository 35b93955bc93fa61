#include "log/line_stamp.h"

#include <ctime>

#include "base/unlocked_stdio.h"

void LineStamp::FormatSecond(std::int32_t second) {
  const std::time_t time = second;
  // localtime_r needs not check the time zone at each call, as localtime does.
  tzset();
  std::tm local{};
  localtime_r(&time, &local);
  text_.Clear();
  // Four digits suffice: 32 bits of seconds cover the years 1901 to 2038.
  text_.AppendZeroFilled<4>(local.tm_year + 1900);
  text_.Append('/');
  text_.AppendZeroFilled<2>(local.tm_mon + 1);
  text_.Append('/');
  text_.AppendZeroFilled<2>(local.tm_mday);
  text_.Append('-');
  text_.AppendZeroFilled<2>(local.tm_hour);
  text_.Append(':');
  text_.AppendZeroFilled<2>(local.tm_min);
  text_.Append(':');
  text_.AppendZeroFilled<2>(local.tm_sec);
  text_.Append('.');
}

std::string_view LineStamp::Format(RecordTime time) {
  const std::int32_t seconds = time.milliseconds / 1000;
  std::int32_t milliseconds = time.milliseconds % 1000;
  // The fraction of a negative time becomes positive, but the seconds do not
  // decrease. Intended: -1 ms prints as .999 of the clock reference's second.
  if (milliseconds < 0) milliseconds += 1000;
  const auto second =
      static_cast<std::int32_t>(time.timeBase + static_cast<std::uint32_t>(seconds));
  if (second_ != second) {
    FormatSecond(second);
    second_ = second;
  }
  text_.Truncate(kSecondLength);
  text_.AppendZeroFilled<3>(milliseconds);
  text_.Append(' ');
  return text_.text();
}

void PrintLineStamp(RecordTime time) {
  static LineStamp stamp;
  PrintPiece(stamp.Format(time));
}
