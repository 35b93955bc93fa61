#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "files.h"
#include "log_builder.h"
#include "support/capture_stream.h"
#include "support/process.h"
#include "tool/run_control.h"

namespace {

std::string Usage(const std::string& name) {
  std::string text = "Usage   : " + name +
                     " <filename|stdin> [--pcap]\n"
                     "        : where\n"
                     "        :     <filename> is the file to log to decode.\n"
                     "        :     <filename> == 'stdin' the data is read raw from stdin.\n"
                     "        :     --pcap can be given to generate a pcap file [optional]\n"
                     "        :            This must be given as the last parameter(after the "
                     "<filename|stdin>)\n"
                     "        : Live logging example\n"
                     "        :     vrkt_wlan_udi_log stdout | " +
                     name +
                     " stdin\n"
                     "        : Supported Hip Versions\n";
  for (const HipVersionName& version : kHipVersionNames) {
    text += std::string("        :     ") + version.dotted + "\n";
  }
  return text;
}

TEST(CommandLine, BannerHasTheVersionOfThePackage) {
  EXPECT_EQ(kBanner, "Decode Tool version:" VRKT_VERSION "\n");
}

TEST(CommandLine, Refusals) {
  const std::string kWrongOrder =
      "itool: --pcap must be given after filename/stdin\n" + Usage("tool");
  const struct {
    const char* name;
    std::vector<std::string> arguments;
    std::string err;
    int status;
  } kCases[] = {
      {"decode", {}, Usage("decode"), 1},
      {"/a/b/tool", {}, Usage("tool"), 1},
      {"/a/b/", {}, Usage(""), 1},
      {"tool", {"--pcap"}, kWrongOrder, 255},
      {"tool", {"--pcap", "stdin"}, kWrongOrder, 255},
      {"tool",
       {"absent.bin", "--pcap"},
       "tool: fopen(absent.bin) Failed errno:" + std::to_string(ENOENT) + "\n",
       255},
      {"tool", {"."}, "tool: QenWifiDriverLogReadUint32() not enough bytes read\n", 255},
      {"tool", {""}, "tool: fopen() Failed errno:" + std::to_string(ENOENT) + "\n", 255},
  };
  for (const auto& c : kCases) {
    const TemporaryDirectory directory;
    EXPECT_EQ(RunTool({.arguments = c.arguments, .directory = directory.path(), .name = c.name}),
              (ToolResult{c.status, kBanner, c.err}));
    // The input is opened first, so a run without input creates no capture file.
    EXPECT_TRUE(std::filesystem::is_empty(directory.path())) << c.err;
  }
}

// A shell cannot start a process with such an argument vector.
TEST(CommandLine, NoArgumentVector) {
  const char* const kEmptyVector[] = {nullptr};
  std::string out;
  const std::string err = CaptureStandardError(
      [&] { out = CaptureStandardOutput([&] { EXPECT_EQ(RunLogDecoder(0, kEmptyVector), -1); }); });
  EXPECT_EQ(out, kBanner);
  EXPECT_EQ(err, Usage("vrkt_wlan_udi_log_decode"));
}

TEST(CommandLine, InputAndCapture) {
  const struct {
    std::vector<std::string> arguments;
    bool reads_file;
    bool captures;
  } kCases[] = {
      {{"stdin"}, false, false},
      {{"stdin", "--pcap"}, false, true},
      {{"stdin", "--pcap", "extra"}, false, true},
      {{"stdin", "extra", "--pcap"}, false, false},
      {{"stdin", "--pcap2"}, false, false},
      {{"./stdin"}, true, false},
      {{"./stdin", "--pcap", "--pcap"}, true, true},
  };
  const std::string file = Log().Header("14.5.12").Load(0ms).bytes();
  const std::string input = Log().Header("14.5.12").Unload(0ms).bytes();
  for (const auto& c : kCases) {
    const TemporaryDirectory directory;
    WriteFile(directory.path() + "/stdin", file);
    const ToolResult result =
        RunTool({.arguments = c.arguments, .input = input, .directory = directory.path()});
    const std::string what = testing::PrintToString(c.arguments);
    EXPECT_EQ(result.out, kBanner + "1970/01/01-00:00:00.000 Driver: " +
                              (c.reads_file ? "Loaded\n" : "Unloaded\n"))
        << what;
    EXPECT_EQ(result.pcap.size(), c.captures ? 24U : 0U) << what;
    EXPECT_EQ(std::filesystem::exists(directory.path() + "/udi_fapi.pcap"), c.captures) << what;
  }
}

}  // namespace
