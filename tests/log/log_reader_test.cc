#include "log/log_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "decode_in_process.h"
#include "fapi/compiled_signal.h"
#include "session_log.h"
#include "support/process.h"

namespace {

// The longest payload that needs no allocation, and its neighbours.
TEST(LogReader, PayloadsOfAnySize) {
  Log log = Log().Header("14.5.12");
  const std::size_t kSizes[] = {0, 1, 2, 63, 64, 65, 8191, 8192, 8193, 1 << 20, 10};
  for (const std::size_t size : kSizes) log.Record(0ms, std::string(size, '\xA5'), 7);
  std::string bytes = log.bytes();
  std::FILE* const stream = OpenBytes(bytes);
  LogReader reader(stream);
  LogItem item;
  ASSERT_TRUE(reader.Read(item));
  for (const std::size_t size : kSizes) {
    ASSERT_TRUE(reader.Read(item)) << size;
    const auto& [length, payload] = item.signal.payload;
    std::string expected(size, '\xA5');
    expected.resize(std::max(size, kMaxSignalEnd));
    EXPECT_EQ(length, size);
    EXPECT_TRUE(
        std::equal(expected.begin(), expected.end(), reinterpret_cast<const char*>(payload)))
        << size;
    EXPECT_EQ(item.signal.signal_length, 7U);
  }
  EXPECT_FALSE(reader.Read(item));
  std::fclose(stream);
}

// Every prefix of the log prints the lines of its whole records and no report.
TEST(LogReader, CutAtEachByte) {
  ::setenv("TZ", "UTC0", 1);
  const Log log = SessionLog();
  DecodedLog expected{.status = 0, .out = kBanner};
  auto next_end = log.ends().begin();
  for (std::size_t cut = 0; cut <= log.bytes().size(); ++cut) {
    std::string bytes = log.bytes().substr(0, cut);
    const DecodedLog result = DecodeInProcess(bytes);
    const bool is_whole = next_end != log.ends().end() && cut == *next_end;
    if (is_whole) {
      ++next_end;
      // Each header and record of this log prints something.
      EXPECT_GT(result.out.size() + result.err.size(), expected.out.size() + expected.err.size());
      expected = result;
    }
    ASSERT_EQ(result.status, 0) << "cut at byte " << cut;
    ASSERT_EQ(result.out, expected.out) << "cut at byte " << cut;
    ASSERT_EQ(result.err, expected.err) << "cut at byte " << cut;

    // The tool does not report the rest.
    std::FILE* const stream = OpenBytes(bytes);
    LogReader reader(stream);
    LogItem item;
    while (reader.Read(item)) {
    }
    std::fclose(stream);
    const auto kind = is_whole || cut == 0 ? LogEnd::Kind::kComplete : LogEnd::Kind::kCut;
    EXPECT_EQ(reader.end().kind, kind) << "cut at byte " << cut;
    EXPECT_EQ(reader.position(), cut);
  }
}

}  // namespace
