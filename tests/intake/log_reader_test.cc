#include "intake/log_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "decode_in_process.h"
#include "fapi/compiled_signal.h"
#include "files.h"
#include "session_log.h"
#include "support/lines.h"
#include "support/process.h"

namespace {

using End = LogEnd::Kind;

struct ReadLog {
  std::string items;  // a letter each: Header, uPtime, Loaded, Unloaded, Signal
  LogEnd end;
  std::uint64_t position;
};

ReadLog Read(std::string bytes) {
  std::FILE* const stream = OpenBytes(bytes);
  LogReader log(stream);
  ReadLog read{};
  LogItem item;
  while (log.Read(item)) read.items += "HPLUS"[static_cast<std::size_t>(item.kind)];
  std::fclose(stream);
  read.end = log.end();
  read.position = log.position();
  return read;
}

// What the tool does not report: complete logs and cut ones, and the position.
TEST(LogReader, SaysHowTheLogEnded) {
  const Log good = Log().Header("14.2.9").TimeRef(1).TimeRef(1, 2);
  const Log reload = Log(good).Unload(0ms).Load(0ms);
  const struct {
    const char* what;
    Log log;
    std::string items;
    End end;
    std::uint32_t value;
  } kCases[] = {
      {"empty", Log(), "", End::kComplete, 0},
      {"a cut header", Log().Words({Log::kHeaderMagic, 6}), "", End::kCut, 0},
      {"after a reload", reload, "HPUL", End::kComplete, 0},
      {"in the header after a reload", Log(reload).Bytes("a"), "HPUL", End::kCut, 0},
      {"in a record's header", Log(good).Bytes("abc"), "HP", End::kCut, 0},
      {"before a payload", Log(good).Words({Log::kSignalMagic, 0, 1, 0}), "HP", End::kCut, 0},
      {"in a payload", Log(good).Words({Log::kSignalMagic, 0, 9000, 0}).Bytes("a"), "HP", End::kCut,
       0},
      {"in a TimeRef", Log(good).Words({Log::kEventMagic, 0, 0, 8, 1}), "HP", End::kCut, 0},
      {"older version", Log(reload).Header("14.1.8"), "HPUL", End::kUnknownHipVersion, 0x0E010008},
      {"all items", Log(reload).Header("14.5.12").Signal(0ms, Fapi(0)), "HPULHS", End::kComplete,
       0},
  };
  for (const auto& c : kCases) {
    const ReadLog read = Read(c.log.bytes());
    EXPECT_EQ(read.items, c.items) << c.what;
    EXPECT_EQ(read.end.kind, c.end) << c.what;
    EXPECT_EQ(read.end.value, c.value) << c.what;
    EXPECT_EQ(read.position, c.log.bytes().size()) << c.what;
  }
}

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

// A truncated log decodes up to its last complete record, without a report.
TEST(LogReader, CutAtEachByte) {
  ::setenv("TZ", "UTC0", 1);
  const Log log = SessionLog();
  const std::string& bytes = log.bytes();
  const DecodedLog whole = DecodeInProcess(bytes);
  DecodedLog expected{.status = 0, .out = kBanner};
  auto next_end = log.ends().begin();
  for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
    const DecodedLog result = DecodeInProcess(bytes.substr(0, cut));
    if (next_end != log.ends().end() && cut == *next_end) {
      ++next_end;
      // Each header and record of this log prints something.
      EXPECT_GT(result.out.size() + result.err.size(), expected.out.size() + expected.err.size());
      EXPECT_TRUE(whole.out.starts_with(result.out)) << "cut at byte " << cut;
      EXPECT_TRUE(whole.err.starts_with(result.err)) << "cut at byte " << cut;
      expected = result;
    }
    ASSERT_EQ(result.status, 0) << "cut at byte " << cut;
    ASSERT_EQ(FindDifference(result.out, expected.out), "") << "cut at byte " << cut;
    ASSERT_EQ(FindDifference(result.err, expected.err), "") << "cut at byte " << cut;
  }
  EXPECT_EQ(next_end, log.ends().end());
  EXPECT_EQ(FindDifference(expected.out, ReadFile(VRKT_SOURCE "/examples/session.txt")), "");
}

}  // namespace
