#include "intake/line_stamp.h"

#include <ctime>

#include "base/text_piece.h"

namespace {

std::tm LocalTime(std::int32_t second) {
  const std::time_t time = second;
#ifdef VRKT_HAVE_LOCALTIME_R
  // Where no TZ is set, localtime looks at the zone file at each call, and this
  // one does not.
  std::tm local{};
  ::localtime_r(&time, &local);
  return local;
#else
  return *std::localtime(&time);
#endif
}

void LearnZone() {
#ifdef VRKT_HAVE_LOCALTIME_R
  ::tzset();  // which localtime does by itself, and localtime_r need not
#endif
}

void FormatSecond(std::int32_t second, TextPiece<20>& text) {
  const std::tm local = LocalTime(second);
  text.Clear();
  // 32 bits of seconds reach from 1901 to 2038.
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

void PrintLineStamp(std::uint32_t timeBase, std::int32_t time_word, StampedSecond& last) {
  const std::int32_t seconds = time_word / 1000;
  std::int32_t milliseconds = time_word % 1000;
  // The seconds are not lowered in return: a negative time keeps its own
  // fraction.
  if (milliseconds < 0) milliseconds += 1000;
  const auto second = static_cast<std::int32_t>(timeBase + static_cast<std::uint32_t>(seconds));
  if (last.second != second) {
    if (!last.second) LearnZone();
    FormatSecond(second, last.text);
    last.second = second;
  }
  TextPiece<24> stamp;
  stamp.Append(last.text.text());
  stamp.AppendZeroFilled<3>(milliseconds);
  stamp.Append(' ');
  stamp.Print();
}
