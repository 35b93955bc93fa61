// The plugin in the programs that load it. They take a while to start, so there are few
// runs: tshark for what a user types, and one sharkd, which opens many files, for the
// rest. Frames that sharkd shows are read and dissected a second time, in any order, as
// in the window of Wireshark.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "files.h"
#include "frames.h"
#include "log/log_reader.h"
#include "log/log_text.h"
#include "log_builder.h"
#include "reference_log.h"
#include "session_log.h"
#include "support/decode_in_process.h"
#include "support/lines.h"
#include "support/process.h"
#include "support/test_logs.h"
#include "support/tool_lines.h"
#include "support/wireshark_user.h"

namespace {

// Returns a shell command that runs a program in the user's directory, with its standard
// error in the file "err".
std::string Command(const WiresharkUser& user, const std::string& program) {
  return "cd " + QuoteForShell(user.home()) + " && exec " + user.Command(program) + " 2>err";
}

// Returns the lines that tshark prints.
Lines RunTshark(const WiresharkUser& user, const std::string& options) {
  EXPECT_EQ(std::system(Command(user, "tshark " + options + " >out").c_str()), 0);
  EXPECT_EQ(ReadFile(user.PathOf("err")), "");
  return SplitLines(ReadFile(user.PathOf("out")));
}

// A running sharkd, which answers each line with a line.
class Sharkd {
 public:
  Sharkd() {
    std::signal(SIGPIPE, SIG_IGN);  // a test fails if sharkd crashes
    if (mkfifo(user_.PathOf("answers").c_str(), 0600) != 0) std::abort();
    requests_ = popen(Command(user_, "sharkd - >answers").c_str(), "w");
    answers_.open(user_.PathOf("answers"));
  }

  ~Sharkd() {
    const int status = pclose(requests_);
    const std::string errors = ReadFile(user_.PathOf("err"));
    EXPECT_TRUE(status == 0 && errors.find("Lua") == std::string::npos) << errors;
  }

  Sharkd(const Sharkd&) = delete;
  Sharkd& operator=(const Sharkd&) = delete;

  const WiresharkUser& user() const { return user_; }

  // Sends a request like R"("load","params":{"file":"log.udi"})".
  std::string Ask(const std::string& request) {
    std::fprintf(requests_,
                 R"({"jsonrpc":"2.0","id":1,"method":%s})"
                 "\n",
                 request.c_str());
    std::fflush(requests_);
    std::string answer;
    std::getline(answers_, answer);
    return answer;
  }

  // Returns whether the file is a log or a capture.
  bool OpenFile(const std::string& name) {
    ++opened_files_;
    is_open_ = Ask(R"("load","params":{"file":")" + name + R"("})").find("OK") != std::string::npos;
    return is_open_;
  }

  bool Open(const std::string& log) {
    WriteFile(user_.PathOf("log"), log);
    return OpenFile("log");
  }

  void SetPreference(const std::string& name, const std::string& value) {
    Ask(R"("setconf","params":{"name":"udi.)" + name + R"(","value":")" + value + R"("})");
  }

  // Returns the numbers of the frames that pass the filter.
  Lines Filter(const std::string& filter) {
    // sharkd 4.0 keeps the frames that pass a filter, also for the next file. Blanks make
    // the filter another one.
    std::string escaped(opened_files_, ' ');
    for (const char c : filter) escaped += c == '"' ? R"(\")" : std::string(1, c);
    Lines numbers =
        Pick(AskOfFile(R"("frames","params":{"filter":")" + escaped + R"("})"), R"("num":)", "}");
    // The colours of a frame can follow its number.
    for (std::string& number : numbers) number.resize(std::min(number.find(','), number.size()));
    return numbers;
  }

  // Returns these fields of each frame, as in "5|0.040000000|".
  Lines ShowFields(const Lines& fields) {
    std::string columns;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      columns += (i > 0 ? R"(,"column)" : R"("column)") + std::to_string(i) + R"(":")" + fields[i] +
                 R"(:0")";
    }
    Lines frames = Pick(AskOfFile(R"("frames","params":{)" + columns + "}"), R"("c":[")", R"("])");
    const std::regex between(R"(",")");
    for (std::string& frame : frames) frame = std::regex_replace(frame, between, "|");
    return frames;
  }

  // Returns the text of each item in a frame's tree.
  Lines ShowTree(std::size_t frame) {
    return Pick(
        AskOfFile(R"("frame","params":{"proto":true,"frame":)" + std::to_string(frame) + "}"),
        R"({"l":")", R"(")");
  }

 private:
  // Without an open file, sharkd does not answer.
  std::string AskOfFile(const std::string& request) { return is_open_ ? Ask(request) : ""; }

  // Returns the texts between each `key` and the next `end`.
  static Lines Pick(std::string_view answer, std::string_view key, std::string_view end) {
    Lines found;
    for (std::size_t at = 0; (at = answer.find(key, at)) != std::string_view::npos;) {
      at += key.size();
      found.emplace_back(answer.substr(at, answer.find(end, at) - at));
    }
    return found;
  }

  WiresharkUser user_;
  std::FILE* requests_;
  std::ifstream answers_;
  std::size_t opened_files_ = 0;
  bool is_open_ = false;
};

class Plugin : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* program : {"tshark", "sharkd"}) {
      if (IsInstalled(program)) continue;
      if (std::getenv("CI") != nullptr) FAIL() << program << " is not installed";
      GTEST_SKIP() << program << " is not installed";
    }
  }
};

// All tests share one sharkd.
class PluginInSharkd : public Plugin {
 protected:
  static void TearDownTestSuite() { sharkd_.reset(); }

  void SetUp() override {
    Plugin::SetUp();
    if (IsSkipped() || HasFatalFailure()) return;
    if (sharkd_ == nullptr) sharkd_ = std::make_unique<Sharkd>();
    // If no plugin is loaded, sharkd does not answer for some of the files.
    ASSERT_TRUE(sharkd_->Open(SessionLog().bytes()));
  }

  static inline std::unique_ptr<Sharkd> sharkd_;
};

TEST_F(Plugin, EveryLineOfEveryVersion) {
  std::string log;
  for (const HipVersionName& version : kHipVersionNames) {
    log += MakeReferenceLog(version.tag).Unload(0ms).Load(0ms).bytes();
  }
  const WiresharkUser user;
  WriteFile(user.PathOf("all.udi"), log);
  const Lines expected = ToolLines(log);
  // A column, because -T fields makes the whole tree.
  const Lines shown =
      RunTshark(user, R"(-r all.udi -o 'gui.column.format:"Line","%Cus:udi.line"')");
  EXPECT_EQ(FindDifference(shown, expected), "");
}

#ifdef VRKT_EXTCAP
TEST_F(Plugin, LiveCapture) {
  const std::string log = SessionLog()
                              .Record(-1500ms, std::string(262112, 'a'), 9)
                              .Record(-1ms, std::string(262113, 'b'), 9)
                              .TimeRef(0x7FFFFFFF, 5, 999ms)
                              .bytes();
  const WiresharkUser user;
  std::filesystem::create_directory(user.PathOf("extcap"));
  std::filesystem::copy_file(VRKT_EXTCAP, user.PathOf("extcap/udi_extcap"));
  WriteFile(user.PathOf("log"), log);
  // The frames are those of the plugin's reader.
  RunTshark(user, "-r log -F pcap -w read");
  const std::string capture = "extcap/udi_extcap --capture --fifo - --command 'cat log' >live";
  EXPECT_EQ(std::system(Command(user, capture).c_str()), 0);
  EXPECT_TRUE(ReadFile(user.PathOf("live")) == ReadFile(user.PathOf("read")));

  const std::string tshark = "env WIRESHARK_EXTCAP_DIR=" + user.PathOf("extcap") + " tshark -Q";
  const std::string options = " -i udi -o 'extcap.udi.command:cat log' -T fields -e udi.line >out";
  EXPECT_EQ(std::system(Command(user, tshark + options).c_str()), 0);
  const Lines shown = SplitLines(ReadFile(user.PathOf("out")));
  const Lines expected = ToolLines(SessionLog().bytes());
  ASSERT_EQ(shown.size(), expected.size() + 3);
  EXPECT_EQ(FindDifference(Lines(shown.begin(), shown.end() - 3), expected), "");
}
#endif

TEST_F(PluginInSharkd, DamagedLogs) {
  int number = 0;  // counts from 1
  for (const std::string& log : MakeDamagedLogs(150)) {
    ++number;
    const Lines shown = sharkd_->Open(log) ? sharkd_->ShowFields({"udi.line"}) : Lines();
    ASSERT_EQ(FindDifference(shown, ToolLines(log)), "")
        << "log " << number << " of MakeDamagedLogs(150)";
  }
}

// What ends a log is shown at the last frame before, in the words of the tool.
TEST_F(PluginInSharkd, DamageIsReported) {
  const std::string header = Log().Header("14.2.9").bytes();
  const std::string good = header + Log().Load(1ms).TimeRef(5).Unload(2ms).bytes();
  const std::string reload = header + Log().Load(1ms).Unload(2ms).Load(3ms).bytes();
  const struct {
    std::string start;
    Log rest;
  } kCases[] = {
      {good, Log()},
      {reload, Log()},
      {good, Log().Bytes("a")},
      {good, Log().Words({kSignalRecordMagic, 0, 9, 9}).Bytes("cut")},
      // Above the largest frame, the reader looks for the record's last byte.
      {good, Log().Words({kSignalRecordMagic, 0, 300000, 9}).Bytes(std::string(299999, 'c'))},
      {reload, Log().Words({kHeaderMagic})},
      {good, Log().Words({0x8000ABCD, 1, 2, 3})},
      {good, Log().Words({kDriverEventMagic, 0, 0, 12, 1, 2, 3})},
      {good, Log().Words({kDriverEventMagic, 0, 0, 0x80000000})},
      {good, Log().Words({kDriverEventMagic, 0, 1, 4})},
      {good, Log().Words({kDriverEventMagic, 0, 2, 4})},
      {reload, Log().Words({1, 6, 0x0E05000C})},
      {reload, Log().Words({kHeaderMagic, 5})},
      {reload, Log().Words({kHeaderMagic, 7, 0x0E05000C})},
      {reload, Log().Header("14.1.8")},
  };
  for (const auto& [start, rest] : kCases) {
    const std::string bytes = start + rest.bytes();
    LogReader log(ReadFrom(bytes));
    for (LogItem item; log.Read(item);) continue;
    std::string report = DescribeLogEnd(log.end());
    std::replace(report.begin(), report.end(), '\n', ' ');
    const bool is_cut = log.end().kind == LogEnd::Kind::kCut;
    EXPECT_TRUE(sharkd_->Open(bytes));
    const Lines reports = sharkd_->ShowFields({"_ws.expert.message"});
    ASSERT_FALSE(reports.empty()) << report;
    Lines expected(reports.size());
    if (is_cut) expected.back() = "After this record the log is cut";
    if (!report.empty()) expected.back() = "After this record the log is damaged: " + report;
    EXPECT_EQ(FindDifference(reports, expected), "") << report;
  }
}

TEST_F(PluginInSharkd, RejectedHeadersAreNotOpened) {
  for (const Log& log : {
           Log().Words({kHeaderMagic, 6}),
           Log().Words({kHeaderMagic, 5, 0x0E05000C}).Load(0ms),
           Log().Words({kHeaderMagic, 7, 0x0E05000C}).Load(0ms),
           Log().Words({kHeaderMagic, 6, 0x0E05000D}).Load(0ms),
           Log().Words({kHeaderMagic + 1, 6, 0x0E05000C}).Load(0ms),
       }) {
    EXPECT_FALSE(sharkd_->Open(log.bytes()));
  }
}

// The tree reads as the line: name, dumps and fields, in print order. Blanks are ignored,
// because some fields have none before their name.
TEST_F(PluginInSharkd, TheTreeReadsAsTheLine) {
  const std::string log = MakeReferenceLog(HipVersionTag::E).bytes();
  sharkd_->SetPreference("dissect_frames", "FALSE");
  sharkd_->Open(log);
  const Lines lines = ToolLines(log);
  ASSERT_GT(lines.size(), 1000U);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].empty()) continue;
    std::string shown;
    bool is_report = false;  // repeats a field
    for (const std::string& item : sharkd_->ShowTree(i + 1)) {
      constexpr std::string_view kProtocol = "WLAN driver UDI log, ";
      if (item.starts_with(kProtocol)) shown = item.substr(kProtocol.size());
      const bool is_field = item[0] >= 'a' && item[0] <= 'z';
      if (is_field && item.find(" label: ") == std::string::npos && !is_report) shown += item;
      if (item[0] == '[' && item[1] <= '9') {  // a word of the field before, as in "[1]:0x0302"
        const std::size_t place = shown.rfind('[') + 1 + 7 * std::stoul(item.substr(1));
        EXPECT_EQ(item.substr(item.find(':') + 1), shown.substr(place, 6)) << shown;
      }
      is_report = item.starts_with("Expert Info");
    }
    std::string expected = lines[i];
    std::erase(expected, ' ');
    std::erase(shown, ' ');
    ASSERT_EQ(shown, expected) << "frame " << i + 1;
  }
  sharkd_->SetPreference("dissect_frames", "TRUE");
}

TEST_F(PluginInSharkd, Filters) {
  const struct {
    const char* filter;
    Lines frames;
  } kCases[] = {
      {"udi.signal == \"mlme_connect_cfm\"", {"11", "65"}},
      {"udi.id == 0x210b", {"11", "65"}},
      {"udi.hip_version == \"14.5.12\"", {"71", "72", "73", "74", "75", "76"}},
      {"udi.vif == 1 && udi.rssi < -70", {"8", "48"}},
      {"udi.host_tag == 0x0102", {"44", "45"}},
      {"udi.bssid == 0a:0b:0c:0d:0e:1f", {"64"}},
      {"udi.frame[0:2] == 80:00", {"7", "8"}},
      {"udi.result_code == 0x800c", {"65"}},
      {"udi.expert.disconnect", {"63"}},
      {"udi[0] == 1 && udi[16:4] == 68:24:57:13 && frame.number < 5", {"3", "4"}},
      {"udi.clock_reference == 1780297200 && udi.milliseconds == 501", {"11"}},
      {"udi.record_length == 127 && udi.signal_length == 38", {"7", "8"}},
      {"udi.uptime == 4711", {"1"}},
      {"udi.result_code.label == \"host_request_failed\"", {"65"}},
      {"udi.transmission_status.label != \"successful\"", {"45"}},
      {"udi.sequence_number == 402", {"43"}},                       // a number
      {"udi.sequence_number == 1 && udi.key", {"29", "31", "60"}},  // one of several words
      {"udi.timestamp == 0x40e2010000000000", {"12"}},
      {"udi.current_pa_temperature == 28", {"76"}},
      {"udi.oob_constraint == -10", {"76"}},
      {"udi.driver.event", {"1", "2", "69", "70", "71"}},
      {"udi.response_in == 45", {"44"}},
      {"udi.response_in == 11 && udi.response_in == 19", {"10"}},  // confirmed and completed
      {"udi.response_time > 0.05", {"9", "19", "45"}},
      {"udi.expert.transmission || udi.expert.result", {"45", "65"}},
      {"udi.expert.too_short", {"66"}},
      {"udi.expert.unknown_id", {"67", "68"}},
      {"udi.line == \"\"", {"66"}},
      {"udi && !udi.line", {}},
  };
  sharkd_->Open(SessionLog().bytes());
  for (const auto& c : kCases) EXPECT_EQ(sharkd_->Filter(c.filter), c.frames) << c.filter;
}

TEST_F(PluginInSharkd, Exchanges) {
  Lines expected;
  for (const ExchangeRecord& record : ListExchangeRecords()) {
    char seconds[16] = "";
    if (record.answers > 0) {
      std::snprintf(seconds, sizeof seconds, "%.9f", record.response_ms / 1000.0);
    }
    const std::string request = record.answers > 0 ? std::to_string(record.answers) : "";
    expected.push_back(std::string(record.answered_by) + "|" + request + "|" + seconds);
  }
  sharkd_->Open(MakeExchangeLog().bytes());
  EXPECT_EQ(FindDifference(
                sharkd_->ShowFields({"udi.response_in", "udi.response_to", "udi.response_time"}),
                expected),
            "");
  EXPECT_EQ(sharkd_->Filter("udi.response_time < -0.9"), (Lines{"69", "71"}));
}

// Wireshark accepts 262,144 bytes per frame, of which 32 are headers.
TEST_F(PluginInSharkd, LongRecordsAreTruncated) {
  const Log log =
      Log()
          .Header("14.5.12")
          .Signal(0ms, Fapi(0x1000).U16(5).PadTo(34).BulkBytes(std::string(262078, '\1')))
          .Signal(1ms, Fapi(0x1000).U16(6).PadTo(34).BulkBytes(std::string(262079, '\2')))
          .Load(2ms);
  sharkd_->Open(log.bytes());
  EXPECT_EQ(sharkd_->ShowFields({"frame.cap_len", "frame.len", "udi.vif", "udi.host_tag"}),
            (Lines{"262144|262144|5|0x0000", "262144|262145|6|0x0000", "32|32||"}));
  EXPECT_EQ(sharkd_->Filter("len(udi.data) == 262078 and len(udi.line) == " +
                            std::to_string(ToolLines(log.bytes())[0].size())),
            (Lines{"1", "2"}));
  EXPECT_EQ(sharkd_->Filter("udi.expert.truncated"), Lines{"2"});
}

TEST_F(PluginInSharkd, ASavedSelectionShowsTheSame) {
  const Lines fields = {"frame.time_epoch", "udi.hip_version", "udi.line"};
  sharkd_->Open(SessionLog().bytes());
  Lines expected = sharkd_->ShowFields(fields);
  ASSERT_EQ(expected.size(), 76U);
  expected.erase(expected.begin() + 4);
  // With the profile, the flow graph has the names of the two sides.
  const Lines flow = RunTshark(
      sharkd_->user(), "-C UDI -r log -Y 'frame.number != 5' -w saved -z flow,any,standard");
  ASSERT_GT(flow.size(), 2U);
  EXPECT_NE(flow[0].find("| host "), std::string::npos) << flow[0];
  EXPECT_NE(flow[1].find("| firmware "), std::string::npos) << flow[1];
  sharkd_->OpenFile("saved");
  EXPECT_EQ(FindDifference(sharkd_->ShowFields(fields), expected), "");
}

// An unknown event, an Unload that a signal of the driver's side cancels, and ids and lengths
// on both sides of each limit.
TEST_F(PluginInSharkd, LimitsAreThoseOfTheTool) {
  Log log = Log().Header("14.5.12").Words({kDriverEventMagic, 0, 9, 77}).Load(1ms);
  for (const std::uint16_t id :
       std::initializer_list<std::uint16_t>{0, 0x64, 0x65, 0x9FFF, 0xA000}) {
    log.Signal(2ms, Fapi(id).PadTo(16));
  }
  const std::string confirm = Fapi(0x1100).PadTo(32).signal();
  for (const std::size_t signal_length : {31U, 32U, 33U}) log.Record(3ms, confirm, signal_length);
  log.Unload(4ms).Signal(5ms, Fapi(0x0042).PadTo(12)).Load(6ms).Record(7ms, confirm, 32);
  sharkd_->Open(log.bytes());
  EXPECT_EQ(FindDifference(sharkd_->ShowFields({"udi.line"}), ToolLines(log.bytes())), "");
  EXPECT_EQ(sharkd_->Filter("udi.expert.bad_length"), Lines{"9"});
}

TEST_F(PluginInSharkd, Columns) {
  const struct {
    std::size_t frame;
    std::string columns;
  } kCases[] = {
      {1, R"(1|0.000|||UDI|40|Driver: Uptime: 4711 seconds)"},
      {5, R"(5|0.100|host|firmware|UDI|74|mlme_add_scan_req information_elements:{0004686f6d65} )"
          R"(scan_id:1 scan_type:full_scan device_address:ff:ff:ff:ff:ff:ff )"
          R"(report_mode_bitmap:real_time spare_1:0 spare_2:0 spare_3:0)"},
      {7,
       R"(7|0.180|firmware|host|UDI|159|mlme_scan_ind )"
       R"(frame:{89 bytes, Beacon frame, SSID=\"home\"} vif:1 channel_frequency:0x130a rssi:-48 )"
       R"(scan_id:1 hotlisted_ap:false preferrednetwork_ap:false anqp_elements_length:0 )"
       R"(network_block_id:0 spare_1:0 spare_2:0 spare_3:0)"},
      {10, R"(10|0.500|host|firmware|UDI|94|mlme_connect_req information_elements:{28 bytes} )"
           R"(vif:1 bssid:0a:0b:0c:0d:0e:0f authentication_type:open_system )"
           R"(channel_frequency:0x130a spare_1:0 spare_2:0 spare_3:0)"},
      {66, R"(66|42.200|firmware|host|UDI|52|ma_unitdata_cfm has 20 of at least 32 bytes)"},
  };
  const Lines shown = sharkd_->ShowFields({});
  ASSERT_EQ(shown.size(), 76U);
  for (const auto& c : kCases) EXPECT_EQ(shown[c.frame - 1], c.columns);
}

Fapi UnitdataInd(unsigned descriptor, const std::string& frame) {
  return Fapi(0x1300).U16(1, descriptor).PadTo(36).BulkBytes(frame);
}

// In Wireshark 4.0, the dissector of HTTP/2 does not return to the plugin here.
TEST_F(Plugin, DissectorsThatDoNotReturn) {
  Log log = Log().Header("14.5.12");
  std::string http2 = FromHex("1300 1f90 00000001 00000001 5018 2000 0000 0000") +
                      "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n" +
                      FromHex("000012 04 00 00000000 0003 00000064");
  for (char port = 0; port < 120; ++port) {
    http2[1] = port;
    log.Signal(0ms, UnitdataInd(1, MakeIpv4Frame({"00:11:22:33:44:55", 1}, {"0a:0b:0c:0d:0e:0f", 2},
                                                 6, http2, 16)));
  }
  const WiresharkUser user;
  WriteFile(user.PathOf("log"), log.bytes());
  EXPECT_EQ(FindDifference(RunTshark(user, "-r log -T fields -e udi.line"), ToolLines(log.bytes())),
            "");
}

// Wireshark's own dissectors show the frames inside signals, and change nothing else.
TEST_F(PluginInSharkd, FramesInside) {
  constexpr Host kPhone = {"00:11:22:33:44:55", 0xC0A80117};
  constexpr Host kServer = {"0a:0b:0c:0d:0e:0f", 0xC0A80101};
  const AirLink link = {kServer.mac, kPhone.mac, 1};
  const std::string beacon = MakeBeacon(kServer.mac, 1, "home", 6);
  const std::string snap = FromHex("aaaa03000000");
  const auto subframe = [&](const std::string& frame) {
    const std::string payload = snap + frame.substr(12);
    return MakeEthernetFrame(kPhone.mac, kServer.mac, static_cast<unsigned>(payload.size()),
                             payload);
  };
  const std::string arp = subframe(MakeArpRequest(kPhone, kServer.ip));
  const std::string ping = subframe(MakePing(kPhone, kServer, 1));
  const std::string padding((4 - arp.size() % 4) % 4, '\0');
  const std::string tcp = MakeIpv4Frame(
      kPhone, kServer, 6, FromHex("0fa0 0050 00000001 00000001 5018 2000 0000 0000") + "GET", 16);
  const struct {
    Fapi signal;
    const char* filter;
  } kCases[] = {
      {Fapi(0x2300).PadTo(38).BulkBytes(beacon), R"(wlan.ssid == "home")"},
      {UnitdataInd(0, MakeDeauthentication(link, 4)), "wlan.fixed.reason_code == 4"},
      {UnitdataInd(1, MakeArpReply(kServer, kPhone)), "arp.opcode == 2"},
      {UnitdataInd(1, MakeEapolKeyFrame(1, kServer.mac, kPhone.mac)), "eapol"},
      {UnitdataInd(1, MakeDhcpFrame(DhcpMessage::kAck, kPhone, kServer)), "dhcp"},
      {UnitdataInd(2, ping), "icmp && !arp"},
      {UnitdataInd(3, arp + padding + ping), "icmp && arp.opcode == 1"},
      {UnitdataInd(1, tcp), "tcp && !tcp.analysis.retransmission"},
      {UnitdataInd(1, tcp), "tcp.analysis.retransmission"},
      // The dissector of this type writes no Info.
      {UnitdataInd(1, MakeEthernetFrame(kPhone.mac, kServer.mac, 0x88B8, snap)), "goose"},
      // These are not shown.
      {UnitdataInd(4, tcp), "udi.data_unit_descriptor == 4 && !eth"},
      {Fapi(0x2300).PadTo(38).BulkBytes("\x08" + beacon.substr(1)), "udi.frame[0] == 8 && !wlan"},
      {Fapi(0x2300).PadTo(38).BulkBytes(beacon.substr(0, 23)), "len(udi.frame) == 23 && !wlan"},
  };
  Log log = Log().Header("14.5.12");
  for (std::size_t i = 0; i < std::size(kCases); ++i) log.Signal(500ms * i, kCases[i].signal);
  for (unsigned descriptor = 0; descriptor < 6; ++descriptor) {
    for (std::size_t size = 0; size < ping.size(); size += 5) {
      log.Signal(0ms, UnitdataInd(descriptor, ping.substr(0, size)));
      log.Signal(0ms, UnitdataInd(descriptor, beacon.substr(0, size)));
    }
  }
  sharkd_->Open(log.bytes());
  for (std::size_t i = 0; i < std::size(kCases); ++i) {
    const std::string number = std::to_string(i + 1);
    const std::string first = std::to_string(std::size(kCases));
    EXPECT_EQ(sharkd_->Filter("frame.number <= " + first + " && (" + kCases[i].filter + ")"),
              Lines{number})
        << kCases[i].filter;
  }
  EXPECT_EQ(FindDifference(sharkd_->ShowFields({"udi.line"}), ToolLines(log.bytes())), "");
  EXPECT_EQ(sharkd_->Filter("_ws.lua.error"), Lines{});
  for (const std::string& columns : sharkd_->ShowFields({})) {
    ASSERT_NE(columns.find("|firmware|host|UDI|"), std::string::npos) << columns;
    ASSERT_EQ(columns.find(", }"), std::string::npos) << columns;
  }
}

TEST_F(PluginInSharkd, PreferencesForFramesInside) {
  const std::string log = SessionLog().bytes();
  sharkd_->SetPreference("dissect_frames", "FALSE");
  sharkd_->SetPreference("dissect_elements", "TRUE");
  sharkd_->Open(log);
  EXPECT_EQ(sharkd_->Filter("eth || wlan"), (Lines{"5", "10", "64"}));
  EXPECT_EQ(sharkd_->Filter(R"(wlan.ssid == "home")"), (Lines{"5", "10", "64"}));
  // A dump is called data, then information_elements, then nan_tlvs, which are no elements.
  const Fapi followup = Fapi(0x2031).PadTo(60).BulkBytes(FromHex("0004") + "home");
  sharkd_->Open(Log().Header("14.0.0").Signal(0ms, followup).Unload(0ms).Load(0ms).bytes() +
                Log().Header("14.0.6").Signal(0ms, followup).Unload(0ms).Load(0ms).bytes() +
                Log().Header("14.5.12").Signal(0ms, followup).bytes());
  EXPECT_EQ(sharkd_->Filter("wlan"), (Lines{"1", "4"}));
  sharkd_->SetPreference("dissect_frames", "TRUE");
  sharkd_->SetPreference("dissect_elements", "FALSE");
}

// `missing` is the number of bytes that were not captured of each frame.
std::string MakePcap(std::uint32_t link_type, const Lines& frames, std::uint32_t missing = 0) {
  std::string pcap = ToBytes(0xA1B2C3D4, 4) + ToBytes(0x00040002, 4) + ToBytes(0, 8) +
                     ToBytes(65536, 4) + ToBytes(link_type, 4);
  for (const std::string& frame : frames) {
    const auto size = static_cast<std::uint32_t>(frame.size());
    pcap += ToBytes(0, 8) + ToBytes(size, 4) + ToBytes(size + missing, 4) + frame;
  }
  return pcap;
}

// Other programs may use the same link types, and users may have said what they mean there.
TEST_F(PluginInSharkd, FramesOfOthersStayTheirs) {
  const std::string frame =
      ToBytes(1, 4) + ToBytes(0x0E05000C, 4) + ToBytes(0, 8) + Log().TimeRef(60, 7).bytes();
  Lines frames = {MakeArpRequest({"00:11:22:33:44:55", 1}, 2)};
  for (std::size_t size = 0; size <= frame.size(); ++size) frames.push_back(frame.substr(0, size));
  for (const std::size_t wrong : {0U, 4U, 16U, 24U}) {
    frames.push_back(frame);
    frames.back()[wrong] += 100;
  }
  sharkd_->Open(MakePcap(148, frames));
  EXPECT_EQ(sharkd_->Filter("udi or _ws.lua.error"), Lines{std::to_string(frame.size() + 2)});
  EXPECT_EQ(sharkd_->Filter("arp"), Lines{"1"});
  // In Wireshark 4.0, the dissector of a frame that is cut does not return to the plugin.
  sharkd_->Open(MakePcap(148, Lines(120, frames[0].substr(0, 40)), 2));
  EXPECT_EQ(sharkd_->Filter("arp").size(), 120U);
  // A signal of a capture file has an id that the version knows, and the signal's length.
  sharkd_->Open(MakePcap(147, {frames[0], Fapi(0x1100).PadTo(31).signal(),
                               Fapi(0x1100).PadTo(32).signal(), Fapi(0x1177).PadTo(32).signal()}));
  EXPECT_EQ(sharkd_->Filter("udi or _ws.lua.error"), Lines{"3"});
  EXPECT_EQ(sharkd_->Filter("arp"), Lines{"1"});
}

// A capture file does not say which bytes are bulk.
TEST_F(PluginInSharkd, CaptureFile) {
  const std::string kLastVersion = kHipVersionNames[GetIndex(kLastHipVersionTag)].dotted;
  const std::string log = MakeReferenceLog(HipVersionTag::I).bytes();
  Log without_bulk = Log().Header("14.3.10");
  for (const ReferenceRecord& record : MakeReferenceRecords(HipVersionTag::I)) {
    without_bulk.Record(0ms, record.payload, record.payload.size());
  }
  const std::string pcap = RunTool({.arguments = {"stdin", "--pcap"}, .input = log}).pcap;
  sharkd_->SetPreference("capture_files", "all");
  sharkd_->Open(pcap);
  EXPECT_EQ(sharkd_->ShowFields({"udi.hip_version"})[0], kLastVersion);
  sharkd_->SetPreference("hip_version", "14.3.10");
  sharkd_->Open(pcap);
  EXPECT_EQ(FindDifference(sharkd_->ShowFields({"udi.line"}), ToolLines(without_bulk.bytes())), "");
  EXPECT_FALSE(sharkd_->Filter("udi.freq_offset_cur < 0").empty());
  sharkd_->SetPreference("hip_version", kLastVersion);
  std::string truncated = pcap;
  truncated[24 + 12] += 1;  // the original length of the first frame
  sharkd_->Open(truncated);
  EXPECT_EQ(sharkd_->Filter("udi.expert.truncated"), Lines{"1"});
  sharkd_->SetPreference("capture_files", "known signals");
}

}  // namespace
