#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "files.h"
#include "log_builder.h"
#include "support/process.h"

namespace {

const std::string kGlobalHeader = FromHex("d4c3b2a1 0200 0400 00000000 00000000 ffff0000 93000000");

TEST(CaptureFile, ContainsAllCompleteRecords) {
  const Fapi confirm = Fapi(0x1100).U16(1).PadTo(32);
  const Fapi unknown = Fapi(0xFFFF);
  const Fapi long_signal = Fapi(0x1000).PadTo(34).BulkBytes(std::string(70000, 'x'));
  const Log log = Log()
                      .Header("14.2.9")
                      .TimeRef(1000, 5)
                      .Signal(1500ms, Fapi(confirm).Bulk("0102"))
                      .Signal(-1500ms, unknown)
                      .Record(0ms, "", 0)
                      .Record(0ms, "abc", 99)
                      .Signal(2ms, long_signal)
                      .Unload(3ms)
                      .Load(4ms)
                      .Header("14.3.10")
                      .Signal(-2147483648ms, unknown)
                      .Words({kSignalRecordMagic, 0, 100, 100})
                      .Bytes("cut off");
  const std::string expected =
      kGlobalHeader + FromHex("e9030000 20a10700 22000000 22000000") + confirm.signal() +
      "\x01\x02" + FromHex("e7030000 e05ef8ff 0a000000 0a000000") + unknown.signal() +
      FromHex("e8030000 00000000 00000000 00000000") +
      FromHex("e8030000 00000000 03000000 03000000") + "abc" +
      FromHex("e8030000 d0070000 92110100 92110100") + long_signal.signal() + long_signal.bulk() +
      kGlobalHeader + FromHex("4d3fdfff c01cf6ff 0a000000 0a000000") + unknown.signal();
  const TemporaryDirectory directory;
  WriteFile(directory.path() + "/udi_fapi.pcap", std::string(100000, 'o'));  // of a run before
  const ToolResult result = RunTool(
      {.arguments = {"stdin", "--pcap"}, .input = log.bytes(), .directory = directory.path()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.pcap, expected);
  const std::string unknown_version = Log().Words({kHeaderMagic, 6, 0}).bytes();
  EXPECT_EQ(RunTool({.arguments = {"stdin", "--pcap"}, .input = unknown_version}).pcap, "");
}

// First without and then with the second place for it.
TEST(CaptureFile, CannotBeOpened) {
  if (std::filesystem::exists("/sdcard")) GTEST_SKIP() << "there is a /sdcard here";
  const TemporaryDirectory directory;
  std::filesystem::create_directory(directory.path() + "/udi_fapi.pcap");
  const ToolResult result = RunTool({.arguments = {"stdin", "--pcap"},
                                     .input = Log().Header("14.5.12").Load(0ms).bytes(),
                                     .directory = directory.path()});
  EXPECT_EQ(result, (ToolResult{0, kBanner + "1970/01/01-00:00:00.000 Driver: Loaded\n",
                                "decode: fopen(output.pcap|/sdcard/udi_fapi.pcap) Failed errno:" +
                                    std::to_string(ENOENT) + "\n" + kDetected}));

  if (geteuid() != 0) GTEST_SKIP() << "only root can make a /sdcard";
  std::filesystem::create_directory("/sdcard");
  const ToolResult on_card = RunTool({.arguments = {"stdin", "--pcap"},
                                      .input = Log().Header("14.5.12").bytes(),
                                      .directory = directory.path()});
  EXPECT_EQ(on_card.err, kDetected);
  EXPECT_EQ(ReadFile("/sdcard/udi_fapi.pcap"), kGlobalHeader);
  std::filesystem::remove_all("/sdcard");
}

}  // namespace
