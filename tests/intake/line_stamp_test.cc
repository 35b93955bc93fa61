#include "intake/line_stamp.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "capture_stream.h"

namespace {

TEST(LineStamp, Arithmetic) {
  ::setenv("TZ", "UTC0", 1);
  const struct {
    std::uint32_t base;
    std::int32_t time;
    const char* stamp;
  } kCases[] = {
      // The first second is -1, which must not mean "none yet".
      {0, -1000, "1969/12/31-23:59:59.000 "},          {1000, 0, "1970/01/01-00:16:40.000 "},
      {1000, 1500, "1970/01/01-00:16:41.500 "},        {1000, 999, "1970/01/01-00:16:40.999 "},
      {1000, -1, "1970/01/01-00:16:40.999 "},          {1000, -1000, "1970/01/01-00:16:39.000 "},
      {1000, -1500, "1970/01/01-00:16:39.500 "},       {0xFFFFFFFF, 0, "1969/12/31-23:59:59.000 "},
      {0xFFFFFFFF, 1000, "1970/01/01-00:00:00.000 "},  {0x7FFFFFFF, 0, "2038/01/19-03:14:07.000 "},
      {0x7FFFFFFF, 1000, "1901/12/13-20:45:52.000 "},  {0x80000000, -1, "1901/12/13-20:45:52.999 "},
      {0x80000000, -1000, "2038/01/19-03:14:07.000 "}, {0, INT32_MAX, "1970/01/25-20:31:23.647 "},
      {0, INT32_MIN, "1969/12/07-03:28:37.352 "},      {951782400, 0, "2000/02/29-00:00:00.000 "},
  };
  for (const auto& c : kCases) {
    for (int repeated = 0; repeated < 2; ++repeated) {
      EXPECT_EQ(CaptureStandardOutput([&] { PrintLineStamp(c.base, c.time); }), c.stamp);
    }
  }
}

TEST(LineStamp, FollowsAChangeOfTheTimeZone) {
  const auto stamp = [](const char* zone, std::uint32_t seconds) {
    ::setenv("TZ", zone, 1);
    return CaptureStandardOutput([&] { PrintLineStamp(seconds, 0); });
  };
  EXPECT_EQ(stamp("UTC0", 3600), "1970/01/01-01:00:00.000 ");
  EXPECT_EQ(stamp("UTC-5:45", 3601), "1970/01/01-06:45:01.000 ");
}

}  // namespace
