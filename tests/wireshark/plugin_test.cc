// The plugin in the programs that load it. Runs take a while to start, so there are
// few of them: tshark for what a user types, and sharkd, which opens many files in
// one process, for the rest. Frames that sharkd shows are read and dissected a
// second time, in any order, as in the window of Wireshark.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "log_builder.h"
#include "reference_log.h"
#include "session_log.h"
#include "support/decode_in_process.h"
#include "support/process.h"

namespace {

using Lines = std::vector<std::string>;

Lines SplitLines(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return lines;
}

// As in "2026/06/01-07:00:02.181 ", at the start of the text.
bool StartsWithStamp(std::string_view text) {
  constexpr std::string_view kForm = "dddd/dd/dd-dd:dd:dd.ddd ";
  if (text.size() < kForm.size()) return false;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool is_digit = text[i] >= '0' && text[i] <= '9';
    if (kForm[i] == 'd' ? !is_digit : text[i] != kForm[i]) return false;
  }
  return true;
}

// What the tool prints after each stamp. A signal that is too short prints nothing,
// so its stamp is followed by the next one.
Lines ToolLines(const std::string& log) {
  const ToolResult result = DecodeInProcess(log);
  Lines lines;
  for (std::string_view line : SplitLines(result.out.substr(kBanner.size()))) {
    constexpr std::size_t kStampSize = 24;
    while (StartsWithStamp(line)) {
      line.remove_prefix(kStampSize);
      if (line.empty() || StartsWithStamp(line)) lines.emplace_back();
    }
    if (!line.empty()) lines.emplace_back(line);
  }
  return lines;
}

struct ProgramResult {
  int status;
  std::string out;
  std::string err;
};

// A user with nothing but the plugin, installed by copying it. The programs do not
// run as root: they would warn about that, and later versions then load no plugin.
class Plugin : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* program : {"tshark", "sharkd"}) {
      if (IsInstalled(program)) continue;
      if (std::getenv("CI") != nullptr) FAIL() << program << " is not installed";
      GTEST_SKIP() << program << " is not installed";
    }
    chmod(home_.path().c_str(), 0777);
    const std::filesystem::path plugins = home_.path() + "/.local/lib/wireshark/plugins";
    std::filesystem::create_directories(plugins);
    std::filesystem::copy_file(VRKT_PLUGIN, plugins / "udi.lua");
  }

  // Moves the plugin to where only its path finds it.
  void RemovePlugin() const {
    std::filesystem::rename(PathOf(".local/lib/wireshark/plugins/udi.lua"), PathOf("udi.lua"));
  }

  std::string PathOf(const std::string& name) const { return home_.path() + "/" + name; }

  ProgramResult Run(std::vector<std::string> words, const std::string& input = "") const {
    const std::string in = PathOf("in");
    const std::string out = PathOf("out");
    const std::string err = PathOf("err");
    WriteFile(in, input);
    const pid_t process = fork();
    if (process == 0) {
      const auto redirect = [](const std::string& path, int flags, int to) {
        return dup2(open(path.c_str(), flags | O_CLOEXEC, 0644), to) == to;
      };
      if (!redirect(in, O_RDONLY, STDIN_FILENO) ||
          !redirect(out, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO) ||
          !redirect(err, O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO)) {
        _exit(126);
      }
      constexpr uid_t kNobody = 65534;
      if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) _exit(126);
      setenv("HOME", home_.path().c_str(), 1);
      setenv("TZ", "UTC0", 1);
      unsetenv("XDG_CONFIG_HOME");
      std::vector<char*> arguments;
      for (std::string& word : words) arguments.push_back(word.data());
      arguments.push_back(nullptr);
      execvp(arguments[0], arguments.data());
      _exit(127);
    }
    const int status = WaitForTool(process);
    return {status, ReadFile(out), ReadFile(err)};
  }

  // The lines that tshark prints, where nothing goes wrong.
  Lines RunTshark(const std::vector<std::string>& options) const {
    std::vector<std::string> words = {"tshark"};
    words.insert(words.end(), options.begin(), options.end());
    const ProgramResult result = Run(words);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
    return SplitLines(result.out);
  }

  // sharkd's answers to requests like R"("frames","params":{"filter":"udi.vif==1"})".
  Lines RunSharkd(const Lines& requests) const {
    std::string input;
    for (std::size_t i = 0; i < requests.size(); ++i) {
      input += R"({"jsonrpc":"2.0","id":)" + std::to_string(i + 1) + R"(,"method":)" + requests[i] +
               "}\n";
    }
    const ProgramResult result = Run({"sharkd", "-"}, input);
    EXPECT_EQ(result.err.find("Lua"), std::string::npos) << result.err;
    EXPECT_EQ(result.status, 0);
    const Lines answers = SplitLines(result.out);
    EXPECT_EQ(answers.size(), requests.size());
    return answers;
  }

  std::string LoadRequest(const std::string& name) const {
    return R"("load","params":{"file":")" + PathOf(name) + R"("})";
  }

  static std::string FramesRequest(const std::string& columns, const std::string& filter = "") {
    std::string request = R"("frames","params":{)" + columns;
    if (!filter.empty())
      request += std::string(columns.empty() ? "" : ",") + R"("filter":")" + filter + '"';
    return request + "}";
  }

  // What follows `key` up to `end`, for each frame of an answer.
  static Lines Pick(std::string_view answer, std::string_view key, char end) {
    Lines found;
    for (std::size_t at = 0; (at = answer.find(key, at)) != std::string_view::npos;) {
      at += key.size();
      found.emplace_back(answer.substr(at, answer.find(end, at) - at));
    }
    return found;
  }

 private:
  TemporaryDirectory home_;
};

// Shows udi.line as the only column: -T fields would make the whole tree.
constexpr const char* kLineColumnOption = "gui.column.format:\"Line\",\"%Cus:udi.line\"";
constexpr const char* kLineColumn = R"("column0":"udi.line:0")";

std::string Join(const Lines& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

TEST_F(Plugin, EveryLineOfEveryVersion) {
  std::string log;
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    log += MakeReferenceLog(static_cast<HipVersionTag>(version)).Unload(0ms).Load(0ms).bytes();
  }
  WriteFile(PathOf("all.udi"), log);
  const Lines expected = ToolLines(log);
  const Lines shown = RunTshark({"-r", PathOf("all.udi"), "-o", kLineColumnOption});
  ASSERT_EQ(shown.size(), expected.size());
  for (std::size_t i = 0; i < shown.size(); ++i)
    ASSERT_EQ(shown[i], expected[i]) << "frame " << i + 1;
}

// Logs that are cut, and logs with a byte or a word changed, put in or taken out.
std::vector<std::string> MakeDamagedLogs(std::size_t count) {
  const std::string whole = SessionLog().bytes();
  std::mt19937 random(20260601);
  const auto below = [&random](std::size_t limit) { return random() % limit; };
  std::vector<std::string> logs;
  for (std::size_t i = 0; i < count; ++i) {
    std::string log = whole;
    const std::size_t at = below(log.size());
    switch (i % 6) {
      case 0:
        log.resize(at);
        break;
      case 1:
        log[at] = static_cast<char>(log[at] ^ 1 << below(8));
        break;
      case 2:
        log[at] = static_cast<char>(below(2) == 0 ? 0xFF : below(256));
        break;
      case 3:
        log.insert(at, ToBytes(static_cast<std::uint32_t>(random()), 1 + below(4)));
        break;
      case 4:
        log.replace(at, 4, ToBytes(static_cast<std::uint32_t>(below(64)), 4));
        break;
      default:
        log.erase(at, 1 + below(8));
    }
    logs.push_back(log);
  }
  return logs;
}

TEST_F(Plugin, DamagedLogs) {
  std::string file = "many logs\n";
  Lines expected;
  for (const std::string& log : MakeDamagedLogs(240)) {
    file += ToBytes(static_cast<std::uint32_t>(log.size()), 4) + log;
    const Lines lines = ToolLines(log);
    expected.insert(expected.end(), lines.begin(), lines.end());
  }
  WriteFile(PathOf("many"), file);
  std::filesystem::copy_file(VRKT_SOURCE "/tests/wireshark/many_logs.lua", PathOf("many_logs.lua"));
  RemovePlugin();
  setenv("VRKT_PLUGIN", PathOf("udi.lua").c_str(), 1);
  const Lines shown = RunTshark({"-2", "-X", "lua_script:" + PathOf("many_logs.lua"), "-r",
                                 PathOf("many"), "-o", kLineColumnOption});
  ASSERT_EQ(shown.size(), expected.size());
  for (std::size_t i = 0; i < shown.size(); ++i)
    ASSERT_EQ(shown[i], expected[i]) << "frame " << i + 1;
}

// As above, by the programs' own reader.
TEST_F(Plugin, DamagedFiles) {
  const std::vector<std::string> logs = MakeDamagedLogs(8);
  Lines requests;
  for (std::size_t i = 0; i < logs.size(); ++i) {
    const std::string name = std::to_string(i) + ".udi";
    WriteFile(PathOf(name), logs[i]);
    requests.push_back(LoadRequest(name));
    requests.push_back(FramesRequest(kLineColumn));
  }
  const Lines answers = RunSharkd(requests);
  ASSERT_EQ(answers.size(), requests.size());
  for (std::size_t i = 0; i < logs.size(); ++i) {
    const Lines shown = Pick(answers[2 * i + 1], R"("c":[")", '"');
    EXPECT_EQ(shown, ToolLines(logs[i])) << "damaged log " << i << ": " << answers[2 * i];
  }
}

// The tree reads as the line: name, dumps and fields, in print order. Blanks aside,
// since some fields have none before their name.
TEST_F(Plugin, TheTreeReadsAsTheLine) {
  WriteFile(PathOf("log.udi"), MakeReferenceLog(HipVersionTag::E).bytes());
  const Lines tree = RunTshark({"-r", PathOf("log.udi"), "-O", "udi"});
  std::string shown;
  std::size_t compared = 0;
  for (const std::string& item : tree) {
    const auto after = [&item](const char* start) {
      return item.starts_with(start) ? item.substr(std::string_view(start).size()) : "";
    };
    if (const std::string name = after("WLAN driver UDI log, "); !name.empty()) {
      shown = name;
    } else if (const std::string line = after("    [Line: "); !line.empty()) {
      std::string expected = line.substr(0, line.size() - 1);
      std::erase(expected, ' ');
      std::erase(shown, ' ');
      if (!expected.empty()) {
        ASSERT_EQ(shown, expected);
        ++compared;
      }
    } else if (item.starts_with("    ") && item[4] >= 'a' && item[4] <= 'z') {
      shown += item.substr(4);
    }
  }
  EXPECT_GT(compared, 1000U);
}

TEST_F(Plugin, Filters) {
  const struct {
    const char* filter;
    const char* frames;
  } kCases[] = {
      {"udi.signal == \\\"mlme_connect_cfm\\\"", "11 39"},
      {"udi.id == 0x210b", "11 39"},
      {"udi.hip_version == \\\"14.5.12\\\"", "45 46 47 48 49 50"},
      {"udi.vif == 1 && udi.rssi < -70", "8 31"},
      {"udi.host_tag == 0x0102", "27 28"},
      {"udi.bssid == 0a:0b:0c:0d:0e:1f", "38"},
      {"udi.frame contains 80:00", "7 8 33"},
      {"udi.result_code == 0x800c", "39"},
      {"udi.result_code.label == \\\"host_request_failed\\\"", "39"},
      {"udi.transmission_status.label != \\\"successful\\\"", "28"},
      {"udi.sequence_number == 402", "26"},                 // a number
      {"udi.sequence_number == 1 && udi.key", "20 22 35"},  // one of several words
      {"udi.timestamp == 0x40e2010000000000", "12"},
      {"udi.current_pa_temperature == 28", "50"},
      {"udi.oob_constraint == -10", "50"},
      {"udi.driver.event", "1 2 43 44 45"},
      {"udi.response_in == 28", "27"},
      {"udi.response_time > 0.05", "28"},
      {"udi.expert.transmission || udi.expert.result", "28 39"},
      {"udi.expert.too_short", "40"},
      {"udi.expert.unknown_id", "41 42"},
      {"udi.line == \\\"\\\"", "40"},
      {"udi && !udi.line", ""},
  };
  WriteFile(PathOf("session"), SessionLog().bytes());  // no matter what its name is
  Lines requests = {LoadRequest("session")};
  for (const auto& c : kCases) requests.push_back(FramesRequest("", c.filter));
  const Lines answers = RunSharkd(requests);
  ASSERT_EQ(answers.size(), requests.size());
  for (std::size_t i = 0; i < std::size(kCases); ++i) {
    EXPECT_EQ(Join(Pick(answers[i + 1], R"("num":)", '}')), kCases[i].frames) << kCases[i].filter;
  }
}

TEST_F(Plugin, RequestsAndConfirms) {
  const auto request = [](unsigned vif, unsigned tag) {
    return Fapi(0x1000).U16(vif, tag).PadTo(34);
  };
  const auto confirm = [](unsigned vif, unsigned tag) {
    return Fapi(0x1100).U16(vif, 0, tag).PadTo(32);
  };
  const Log log = Log()
                      .Header("14.5.12")
                      .Signal(0ms, request(1, 7))                   // 1
                      .Signal(10ms, request(1, 7))                  // 2
                      .Signal(20ms, request(2, 7))                  // 3
                      .Signal(30ms, confirm(1, 8))                  // 4: answers none
                      .Signal(40ms, confirm(1, 7))                  // 5: answers the oldest
                      .Signal(55ms, confirm(1, 7))                  // 6: answers the other
                      .Signal(60ms, confirm(1, 7))                  // 7: answers none
                      .Signal(70ms, confirm(2, 7))                  // 8
                      .Signal(80ms, Fapi(0x200B).U16(1).PadTo(34))  // 9: mlme_connect_req
                      .Signal(90ms, Fapi(0x9007).PadTo(50))  // 10: wlanlite_tx_set_params_req
                      .Signal(95ms, Fapi(0x9107).PadTo(24))  // 11: wlanlite_rx_start_cfm
                      .Signal(96ms, Fapi(0x9102).PadTo(24))  // 12: wlanlite_tx_set_params_cfm
                      .Load(97ms)                            // 13
                      .Signal(99ms, Fapi(0x210B).U16(1).PadTo(26));  // 14: mlme_connect_cfm
  WriteFile(PathOf("log.udi"), log.bytes());
  const Lines shown =
      RunTshark({"-2", "-r", PathOf("log.udi"), "-Y", "udi.response_in || udi.response_to", "-T",
                 "fields", "-E", "separator=|", "-e", "frame.number", "-e", "udi.response_in", "-e",
                 "udi.response_to", "-e", "udi.response_time"});
  EXPECT_EQ(shown, (Lines{"1|5||", "2|6||", "3|8||", "5||1|0.040000000", "6||2|0.045000000",
                          "8||3|0.050000000", "10|12||", "12||10|0.006000000"}));
}

TEST_F(Plugin, TimesAreExact) {
  const Log log =
      Log().Header("14.5.12").TimeRef(1000).Load(1500ms).Load(-1ms).Load(-1500ms).TimeRef(
          0x7FFFFFFF, 5, 999ms);
  WriteFile(PathOf("log.udi"), log.bytes());
  EXPECT_EQ(RunTshark({"-2", "-r", PathOf("log.udi"), "-T", "fields", "-e", "frame.time_epoch"}),
            (Lines{"1001.500000000", "999.999000000", "998.500000000", "2147483647.999000000"}));
}

// What ends a log is shown at the last frame before.
TEST_F(Plugin, DamageIsReported) {
  const std::string header = Log().Header("14.2.9").bytes();
  const Log good = Log().Load(1ms).TimeRef(5).Unload(2ms);
  const Log reload = Log().Load(1ms).Unload(2ms).Load(3ms);
  const std::uint32_t kMagic = Log::kHeaderMagic;
  const struct {
    std::string records;
    const char* report;
  } kCases[] = {
      {good.bytes(), ""},
      {reload.bytes(), ""},
      {good.bytes() + "abc", "cut"},
      {good.bytes() + Log().Words({Log::kSignalMagic, 0, 9, 9}).Bytes("cut").bytes(), "cut"},
      {reload.bytes() + Log().Words({kMagic}).bytes(), "cut"},
      {good.bytes() + Log().Words({0xABCD, 1, 2, 3}).bytes(),
       "damaged: bad magic number 0x0000ABCD in place of a record"},
      {good.bytes() + Log().Words({Log::kEventMagic, 0, 0, 12, 1, 2, 3}).bytes(),
       "damaged: a clock reference has 12 bytes, not 4 or 8"},
      {good.bytes() + Log().Words({Log::kEventMagic, 0, 1, 4}).bytes(),
       "damaged: a Load event has 4 bytes, not 0"},
      {good.bytes() + Log().Words({Log::kEventMagic, 0, 2, 4}).bytes(),
       "damaged: an Unload event has 4 bytes, not 0"},
      {reload.bytes() + Log().Words({1, 6, 0x0E05000C}).bytes(),
       "damaged: bad magic number 0x00000001 in the header after a "
       "reload"},
      {reload.bytes() + Log().Words({kMagic, 5}).bytes(),
       "damaged: format version 5 in the header after a reload"},
      {reload.bytes() + Log().Words({kMagic, 7, 0x0E05000C}).bytes(),
       "damaged: format version 7 in the header after a reload"},
      {reload.bytes() + Log().Header("14.1.8").bytes(),
       "damaged: HIP version 0x0E010008 in the header after a reload "
       "is unknown or older"},
  };
  Lines requests;
  for (const auto& c : kCases) {
    const std::string name = std::to_string(requests.size()) + ".udi";
    WriteFile(PathOf(name), header + c.records);
    requests.push_back(LoadRequest(name));
    requests.push_back(FramesRequest(R"("column0":"_ws.expert.message:0")"));
  }
  const Lines answers = RunSharkd(requests);
  ASSERT_EQ(answers.size(), requests.size());
  for (std::size_t i = 0; i < std::size(kCases); ++i) {
    const Lines reports = Pick(answers[2 * i + 1], R"("c":[")", '"');
    ASSERT_FALSE(reports.empty()) << kCases[i].report;
    const std::string report = kCases[i].report;
    EXPECT_EQ(reports.back(), report.empty() ? "" : "After this record the log is " + report);
    for (std::size_t frame = 0; frame + 1 < reports.size(); ++frame) EXPECT_EQ(reports[frame], "");
  }
}

TEST_F(Plugin, RefusedHeadersAreNotOpened) {
  const Log logs[] = {
      Log().Words({Log::kHeaderMagic, 6}),
      Log().Words({Log::kHeaderMagic, 5, 0x0E05000C}).Load(0ms),
      Log().Words({Log::kHeaderMagic, 7, 0x0E05000C}).Load(0ms),
      Log().Words({Log::kHeaderMagic, 6, 0x0E05000D}).Load(0ms),
      Log().Words({Log::kHeaderMagic + 1, 6, 0x0E05000C}).Load(0ms),
  };
  Lines requests;
  for (const Log& log : logs) {
    const std::string name = std::to_string(requests.size()) + ".udi";
    WriteFile(PathOf(name), log.bytes());
    requests.push_back(LoadRequest(name));
  }
  for (const std::string& answer : RunSharkd(requests)) {
    EXPECT_EQ(answer.find("\"OK\""), std::string::npos) << answer;
  }
}

// Wireshark accepts 262,144 bytes per frame, of which 32 are headers.
TEST_F(Plugin, LongRecordsAreTruncated) {
  const Log log =
      Log()
          .Header("14.5.12")
          .Signal(0ms, Fapi(0x1000).U16(5).PadTo(34).BulkBytes(std::string(262078, '\1')))
          .Signal(1ms, Fapi(0x1000).U16(6).PadTo(34).BulkBytes(std::string(262079, '\2')))
          .Load(2ms);
  WriteFile(PathOf("log.udi"), log.bytes());
  const Lines shown =
      RunTshark({"-2", "-r", PathOf("log.udi"), "-T", "fields", "-E", "separator=|", "-e",
                 "frame.cap_len", "-e", "frame.len", "-e", "udi.vif", "-e", "udi.line"});
  const Lines expected = ToolLines(log.bytes());
  ASSERT_EQ(shown.size(), 3U);
  EXPECT_EQ(shown[0], "262144|262144|5|" + expected[0]);
  EXPECT_TRUE(shown[1].starts_with("262144|262145|6|ma_unitdata_req data:{0202"));
  EXPECT_EQ(shown[2], "32|32||Driver: Loaded");
}

TEST_F(Plugin, ASavedSelectionShowsTheSame) {
  const std::string log = SessionLog().bytes();
  WriteFile(PathOf("session.udi"), log);
  RunTshark({"-r", PathOf("session.udi"), "-Y", "frame.number != 5", "-w", PathOf("saved.pcapng")});
  const Lines columns = {"-T", "fields",          "-E", "separator=|", "-e", "frame.time_epoch",
                         "-e", "udi.hip_version", "-e", "udi.line"};
  Lines log_options = {"-r", PathOf("session.udi")};
  Lines saved_options = {"-r", PathOf("saved.pcapng")};
  log_options.insert(log_options.end(), columns.begin(), columns.end());
  saved_options.insert(saved_options.end(), columns.begin(), columns.end());
  Lines expected = RunTshark(log_options);
  ASSERT_EQ(expected.size(), 50U);
  expected.erase(expected.begin() + 4);
  EXPECT_EQ(RunTshark(saved_options), expected);
}

// A capture file does not say which bytes are bulk.
TEST_F(Plugin, CaptureFile) {
  const std::string log = MakeReferenceLog(HipVersionTag::I).bytes();
  Log without_bulk = Log().Header("14.3.10");
  for (const ReferenceRecord& record : MakeReferenceRecords(HipVersionTag::I)) {
    without_bulk.Record(0ms, record.payload, record.payload.size());
  }
  RunTool({.arguments = {"stdin", "--pcap"}, .input = log, .directory = PathOf("")});
  EXPECT_EQ(RunTshark({"-o", "udi.hip_version:14.3.10", "-r", PathOf("udi_fapi.pcap"), "-T",
                       "fields", "-e", "udi.line"}),
            ToolLines(without_bulk.bytes()));
  EXPECT_EQ(RunTshark({"-c", "1", "-r", PathOf("udi_fapi.pcap"), "-T", "fields", "-e",
                       "udi.hip_version"}),
            Lines{"14.5.12"});
}

}  // namespace
