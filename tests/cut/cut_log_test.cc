#include "cut_log.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "reference_log.h"
#include "session_log.h"
#include "support/decode_in_process.h"
#include "support/lines.h"
#include "support/test_logs.h"
#include "support/tool_lines.h"

namespace {

struct Part {
  std::string bytes{};
  CutResult result{};
};

Part Cut(const std::string& log, Selection& selection) {
  Part part;
  const auto write = [&part](std::string_view bytes) {
    part.bytes += bytes;
    return 0;
  };
  part.result = CutLog(ReadFrom(log), write, selection, std::nullopt);
  return part;
}

Part CutAll(const std::string& log) {
  Selection all;
  return Cut(log, all);
}

// Reloads of all kinds, clocks that go backwards, and records that no driver should write.
std::string MakeAwkwardLog() {
  const Fapi connect_cfm = Fapi(0x210B).U16(1, 77).Spares();
  return Log()
      .Header("13.1.0")
      .Signal(-1ms, connect_cfm)
      .TimeRef(1000)
      .Load(1ms)
      .Signal(2ms, Fapi(0x210B).PadTo(20))  // too short
      .Unload(3ms)
      .Signal(4ms, Fapi(0x0042))  // of the driver side: cancels the Unload
      .Load(5ms)
      .TimeRef(500, 7, -2500ms)
      .Words({kDriverEventMagic, 0, 9, 77})  // unknown
      .Signal(-1500ms, connect_cfm)
      .Unload(7ms)
      .Load(8ms)
      .Header("14.0.4")
      .TimeRef(2000)
      .TimeRef(3000)
      .Signal(9ms, connect_cfm)
      .Unload(10ms)
      .Signal(11ms, connect_cfm)
      .Load(12ms)
      .Header("14.0.4")
      .Signal(13ms, connect_cfm)
      .Record(14ms, "", 0)
      .Record(15ms, "\x0B\x21 shorter than its signal", 99)
      .Unload(16ms)
      .TimeRef(4000)
      .Load(17ms)
      .Header("14.5.12")
      .Signal(18ms, connect_cfm)
      .Unload(19ms)
      .Load(20ms)
      .bytes();
}

TEST(CutLog, EveryRangeHasItsLines) {
  ::setenv("TZ", "UTC0", 1);
  const std::string log = MakeAwkwardLog();
  const Lines lines = ToolLines(log, true);
  for (std::size_t from = 1; from <= lines.size(); ++from) {
    for (std::size_t to = from; to <= lines.size(); ++to) {
      Selection range{.from = ParsePlace(std::to_string(from)),
                      .to = ParsePlace(std::to_string(to))};
      const Part part = Cut(log, range);
      const Lines expected(lines.begin() + static_cast<std::ptrdiff_t>(from) - 1,
                           lines.begin() + static_cast<std::ptrdiff_t>(to));
      ASSERT_EQ(FindDifference(ToolLines(part.bytes, true), expected), "") << from << " to " << to;
      ASSERT_EQ(CutAll(part.bytes).result.end->kind, LogEnd::Kind::kComplete);
      ASSERT_FALSE(part.result.end);
    }
  }
}

TEST(CutLog, AWholeLogIsCopied) {
  EXPECT_TRUE(CutAll(SessionLog().bytes()).bytes == SessionLog().bytes());
  for (const HipVersionName& version : kHipVersionNames) {
    const std::string log = MakeReferenceLog(version.tag).bytes();
    EXPECT_TRUE(CutAll(log).bytes == log) << version.dotted;
  }
}

TEST(CutLog, DamagedLogs) {
  ::setenv("TZ", "UTC0", 1);
  for (const std::string& log : MakeDamagedLogs(300)) {
    const Part part = CutAll(log);
    ASSERT_EQ(FindDifference(ToolLines(part.bytes), ToolLines(log)), "");
    ASSERT_TRUE(part.result.end);
  }
}

TEST(CutLog, Records) {
  ::setenv("TZ", "UTC0", 1);
  const std::string log = MakeAwkwardLog();
  const Lines lines = ToolLines(log);
  const std::string kUnloaded = "Driver: Unloaded";
  const std::string kLoaded = "Driver: Loaded";
  const struct {
    const char* list;
    Lines lines;  // numbers of lines of the log, and lines that it does not have there
    bool is_wrong = false;
    bool is_read_to_end = false;
  } kCases[] = {
      // A reload is added where none is selected and the version changes.
      {"1\n8\n11\n20\n", {"1", "8", kUnloaded, kLoaded, "11", kUnloaded, kLoaded, "20"}},
      {" 1\n9\n11", {"1", "9", kLoaded, "11"}},
      {"1\n10\n11\n", {"1", kUnloaded, "10", "11"}},
      // The version stays.
      {"11\n12\n15\n15\n", {"11", "12", "15"}},
      {"11\n14\n15\n", {"11", "14", "15"}},
      // In the part, the driver side does not cancel the Unload.
      {"4\n6\n8\n", {"4", "6", "8"}},
      {"20\n77\n", {"20"}, false, true},
      {"77\n", {}, false, true},
      {"", {}, false, true},
      {"3\n2\n", {"3"}, true},
      {"3\nx\n", {"3"}, true},
      {"-3\n", {}, true, true},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.list);
    Lines expected;
    for (const std::string& line : c.lines) {
      expected.push_back(line[0] == 'D' ? line : lines.at(std::stoul(line) - 1));
    }
    std::string list = c.list + std::string("\n");  // fmemopen rejects an empty buffer

    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        fmemopen(list.data(), list.size(), "r"), &std::fclose);
    Selection selection{.records = RecordList(file.get())};
    const Part part = Cut(log, selection);
    EXPECT_EQ(FindDifference(ToolLines(part.bytes), expected), "");
    EXPECT_EQ(selection.records->is_wrong(), c.is_wrong);
    EXPECT_EQ(part.result.end.has_value(), c.is_read_to_end);
  }
}

// Stamps are compared as text: the clock of this log runs backwards.
TEST(CutLog, Places) {
  ::setenv("TZ", "UTC0", 1);
  constexpr std::uint32_t kSeven = 1780297200;  // 2026-06-01 07:00:00 UTC
  Log log = Log().Header("14.5.12");
  std::uint32_t number = 0;
  for (const Log::Time time : {0ms, 500ms, 60000ms, -1ms, 1500ms, 86399000ms}) {
    log.TimeRef(kSeven, ++number, time);
  }
  const struct {
    const char* from;
    const char* to;
    const char* records;
  } kCases[] = {
      {"2026/06/01-07:00:00.5", "2026/06/01-07:00:01", "2 4 5"},
      {"2026-06-01 07:00:00,500", "2026-06-01T07:00:00", "2 4"},
      {"2026/06/02", "2026/", "6"},
      {"", "2026/06/01", "1 2 3 4 5"},
      {"06:", "07:00:00", "1 2 4 6"},
      {"07:00:00,501", "", "3 4 5"},
      {"3", "07:00:01.500", "4 5 6"},
      {"2", "3", "2 3"},
      {"3", "2", ""},
  };
  for (const auto& [from, to, records] : kCases) {
    Selection selection{.from = ParsePlace(from), .to = ParsePlace(to)};
    std::string selected;
    for (const std::string& line : ToolLines(Cut(log.bytes(), selection).bytes)) {
      if (!selected.empty()) selected += ' ';
      selected += line[line.find_first_of("123456")];
    }
    EXPECT_EQ(selected, records) << from << " to " << to;
  }
  for (const char* text : {"", "x", "7:00", "2026/06/01/", "-1", "07:00:00.0001",
                           "99999999999999999999", "2026/06/01-07:00:00.000 "}) {
    EXPECT_FALSE(ParsePlace(text)) << text;
  }
}

// Whenever more of a live log is needed, all records that have come are written. Only the Load of
// a reload waits for the header after it.
TEST(CutLog, LiveLogs) {
  constexpr std::size_t kHeaderSize = 12;
  const Log log = SessionLog();
  std::size_t arrived = 0;
  std::size_t whole = 0;  // the end of the last record that has arrived
  std::size_t written = 0;
  auto next_end = log.ends().begin();
  const auto read = [&](void* bytes, std::size_t /*size*/) -> ssize_t {
    if (arrived == *next_end) whole = *next_end++;
    const bool has_ended = next_end == log.ends().end();
    const bool is_header_next = !has_ended && *next_end - whole == kHeaderSize;
    EXPECT_TRUE(written == whole || whole <= kHeaderSize || is_header_next) << whole;
    if (has_ended) return 0;
    *static_cast<char*>(bytes) = log.bytes()[arrived++];
    return 1;
  };
  const auto write = [&](std::string_view bytes) {
    written += bytes.size();
    return 0;
  };
  Selection all;
  CutLog(read, write, all, std::nullopt);
  EXPECT_EQ(written, log.bytes().size());
}

}  // namespace
