#include "log/log_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "base/sanitizers.h"
#include "fapi/compiled_signal.h"
#include "files.h"
#include "session_log.h"
#include "support/decode_in_process.h"
#include "support/process.h"

namespace {

// The longest payload that needs no allocation, and its neighbours.
TEST(LogReader, PayloadsOfAnySize) {
  Log log = Log().Header("14.5.12");
  const std::size_t kSizes[] = {0, 1, 2, 63, 64, 65, 8191, 8192, 8193, 1 << 20, 10};
  for (const std::size_t size : kSizes) log.Record(0ms, std::string(size, '\xA5'), 7);
  LogReader reader(ReadFrom(log.bytes()));
  LogItem item;
  ASSERT_TRUE(reader.Read(item));
  for (const std::size_t size : kSizes) {
    ASSERT_TRUE(reader.Read(item)) << size;
    const SignalSpan payload = item.signal.payload;
    std::string expected(size, '\xA5');
    expected.resize(std::max(size, kMaxSignalEnd));
    EXPECT_EQ(payload.size(), size);
    EXPECT_TRUE(
        std::equal(expected.begin(), expected.end(), reinterpret_cast<const char*>(payload.data())))
        << size;
    EXPECT_EQ(item.signal.signal_length, 7U);
  }
  EXPECT_FALSE(reader.Read(item));
}

// Every prefix of the log prints the lines of its whole records and no report.
TEST(LogReader, CutAtEachByte) {
  ::setenv("TZ", "UTC0", 1);
  const Log log = SessionLog();
  DecodedLog expected{.status = 0, .out = kBanner};
  auto next_end = log.ends().begin();
  for (std::size_t cut = 0; cut <= log.bytes().size(); ++cut) {
    const std::string bytes = log.bytes().substr(0, cut);
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
    LogReader reader(ReadFrom(bytes));
    LogItem item;
    while (reader.Read(item)) {
    }
    const auto kind = is_whole || cut == 0 ? LogEnd::Kind::kComplete : LogEnd::Kind::kCut;
    EXPECT_EQ(reader.end().kind, kind) << "cut at byte " << cut;
    EXPECT_EQ(reader.position().offset, cut);

    // A read that fails is not the end of the log.
    LogReader failing([read = ReadFrom(bytes)](void* destination, std::size_t size) {
      const ssize_t count = read(destination, size);
      return count == 0 ? -1 : count;
    });
    while (failing.Read(item)) {
    }
    EXPECT_TRUE(failing.end().kind == LogEnd::Kind::kWordUnreadable ||
                failing.end().kind == LogEnd::Kind::kPayloadUnreadable);
  }
}

// As from a slow pipe: each item comes with its last byte, and nothing after it is read.
TEST(LogReader, ReturnsAnItemWithItsLastByte) {
  const Log log = SessionLog();
  std::size_t given = 0;
  LogReader reader([&](void* bytes, std::size_t /*size*/) -> ssize_t {
    if (given == log.bytes().size()) return 0;
    *static_cast<char*>(bytes) = log.bytes()[given++];
    return 1;
  });
  LogItem item;
  for (const std::size_t end : log.ends()) {
    ASSERT_TRUE(reader.Read(item));
    ASSERT_EQ(given, end);
  }
  EXPECT_FALSE(reader.Read(item));
}

// The log is longer than the reader's buffer, and has payloads longer than it.
TEST(LogReader, ReturnsToAnyItem) {
  Log log = SessionLog();
  for (const std::size_t size : {10U, 40000U, 500U, 70000U, 9000U})
    log.Record(0ms, std::string(size, '\1'), 7);
  const TemporaryDirectory directory;
  const std::string path = directory.path() + "/log";
  ASSERT_TRUE(WriteFile(path, log.bytes() + log.bytes().substr(0, 5)));
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const auto describe = [](const LogReader& reader, const LogItem& item) {
    return std::tuple(item.kind, item.time.timeBase, item.time.milliseconds, item.event,
                      item.uptime, reader.version().tag, item.signal.id, item.signal.signal_length,
                      std::string(item.signal.payload.begin(), item.signal.payload.end()));
  };
  LogReader reader(file);
  LogItem item;
  std::vector<LogPosition> positions = {reader.position()};
  std::vector<decltype(describe(reader, item))> items;
  while (reader.Read(item)) {
    items.push_back(describe(reader, item));
    positions.push_back(reader.position());
    item = {};
  }
  ASSERT_EQ(items.size(), log.ends().size());
  for (std::size_t i = 0; i < 3 * items.size(); ++i) {
    const std::size_t place = 7 * i * i % items.size();
    ASSERT_TRUE(reader.Seek(positions[place]));
    for (std::size_t next = place; next < std::min(place + 3, items.size()); ++next) {
      item = {};
      ASSERT_TRUE(reader.Read(item));
      ASSERT_EQ(describe(reader, item), items[next]) << place;
    }
  }
  close(file);
  EXPECT_FALSE(LogReader(ReadFrom(log.bytes())).Seek(positions[1]));
}

#ifdef VRKT_HAS_ADDRESS_SANITIZER
TEST(LogReader, NothingAfterAPayloadIsReadable) {
  for (const std::size_t size : {0, 10, 63, 64, 65, 1000, 8190, 20000}) {
    const Log log = Log().Header("14.5.12").Record(0ms, std::string(size, '\1'), 7);
    LogReader reader(ReadFrom(log.bytes()));
    LogItem item;
    ASSERT_TRUE(reader.Read(item) && reader.Read(item));
    const volatile std::uint8_t* const payload = item.signal.payload.data();
    const std::size_t end = std::max(size, kMaxSignalEnd);
    EXPECT_EQ(payload[end - 1], size < end ? 0 : 1);
    EXPECT_DEATH(static_cast<void>(payload[end]), "AddressSanitizer") << size;
  }
}
#endif

}  // namespace
