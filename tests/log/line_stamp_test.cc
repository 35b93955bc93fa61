#include "log/line_stamp.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "support/capture_stream.h"

namespace {

TEST(LineStamp, ArithmeticAndTimeZones) {
  const struct {
    const char* zone;
    std::uint32_t base;
    std::int32_t time;
    const char* stamp;
  } kCases[] = {
      {"UTC0", 0, -1000, "1969/12/31-23:59:59.000 "},  // second -1 must not mean "none yet"
      {"UTC0", 1000, 0, "1970/01/01-00:16:40.000 "},
      {"UTC0", 1000, 1500, "1970/01/01-00:16:41.500 "},
      {"UTC0", 1000, 999, "1970/01/01-00:16:40.999 "},
      {"UTC0", 1000, -1, "1970/01/01-00:16:40.999 "},
      {"UTC0", 1000, -1500, "1970/01/01-00:16:39.500 "},
      {"UTC0", 0xFFFFFFFF, 1000, "1970/01/01-00:00:00.000 "},
      {"UTC0", 0x7FFFFFFF, 0, "2038/01/19-03:14:07.000 "},
      {"UTC0", 0x7FFFFFFF, 1000, "1901/12/13-20:45:52.000 "},
      {"UTC0", 0x80000000, -1000, "2038/01/19-03:14:07.000 "},
      {"UTC0", 0, INT32_MAX, "1970/01/25-20:31:23.647 "},
      {"UTC0", 0, INT32_MIN, "1969/12/07-03:28:37.352 "},
      {"UTC0", 951782400, 0, "2000/02/29-00:00:00.000 "},
      {"UTC-5:45", 951782401, 0, "2000/02/29-05:45:01.000 "},
      {"Australia/Lord_Howe", 1601738999, 0, "2020/10/04-01:59:59.000 "},
      {"Australia/Lord_Howe", 1601739000, 0, "2020/10/04-02:30:00.000 "},
      {"Pacific/Apia", 1325239199, 0, "2011/12/29-23:59:59.000 "},
      {"Pacific/Apia", 1325239200, 0, "2011/12/31-00:00:00.000 "},
      {"Africa/Monrovia", 63593069, 0, "1972/01/06-23:59:59.000 "},
      {"Africa/Monrovia", 63593070, 0, "1972/01/07-00:44:30.000 "},
  };
  const bool has_zones = std::filesystem::exists("/usr/share/zoneinfo/Africa/Monrovia");
  for (const auto& c : kCases) {
    if (!has_zones && std::string_view(c.zone).find('/') != std::string_view::npos) continue;
    ::setenv("TZ", c.zone, 1);
    for (int repeated = 0; repeated < 2; ++repeated) {
      EXPECT_EQ(CaptureStandardOutput([&] { PrintLineStamp({c.base, c.time}); }), c.stamp);
    }
  }
  ::setenv("TZ", "UTC0", 1);
}

}  // namespace
