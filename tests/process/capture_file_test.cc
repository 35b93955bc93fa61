#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
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
  const Log log = Log()
                      .Header("14.2.9")
                      .TimeRef(1000, 5)
                      .Signal(1500ms, Fapi(confirm).Bulk("0102"))
                      .Signal(-1500ms, unknown)
                      .Record(0ms, "", 0)
                      .Record(0ms, "abc", 99)
                      .Signal(2ms, Fapi(0x1000).PadTo(20))
                      .Unload(3ms)
                      .Load(4ms)
                      .Header("14.3.10")
                      .Signal(-2147483648ms, unknown)
                      .Words({Log::kSignalMagic, 0, 100, 100})
                      .Bytes("cut off");
  const std::string expected =
      kGlobalHeader + FromHex("e9030000 20a10700 22000000 22000000") + confirm.signal() +
      "\x01\x02" + FromHex("e7030000 e05ef8ff 0a000000 0a000000") + unknown.signal() +
      FromHex("e8030000 00000000 00000000 00000000") +
      FromHex("e8030000 00000000 03000000 03000000") + "abc" +
      FromHex("e8030000 d0070000 14000000 14000000") + Fapi(0x1000).PadTo(20).signal() +
      kGlobalHeader + FromHex("4d3fdfff c01cf6ff 0a000000 0a000000") + unknown.signal();
  const ToolResult result = RunTool({.arguments = {"stdin", "--pcap"}, .input = log.bytes()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.pcap, expected);
}

TEST(CaptureFile, LongRecordsAreComplete) {
  const std::string bulk(70000, 'x');
  const Fapi signal = Fapi(0x1000).PadTo(34).BulkBytes(bulk);
  const ToolResult result = RunTool({.arguments = {"stdin", "--pcap"},
                                     .input = Log().Header("14.5.12").Signal(0ms, signal).bytes()});
  EXPECT_EQ(result.pcap, kGlobalHeader + FromHex("00000000 00000000 92110100 92110100") +
                             signal.signal() + bulk);
}

TEST(CaptureFile, IsEmptyWithoutAValidHeader) {
  for (const Log& log : {Log(), Log().Words({Log::kHeaderMagic, 6, 0})}) {
    const TemporaryDirectory directory;
    WriteFile(directory.path() + "/udi_fapi.pcap", "from a run before");
    const ToolResult result = RunTool(
        {.arguments = {"stdin", "--pcap"}, .input = log.bytes(), .directory = directory.path()});
    EXPECT_EQ(result.pcap, "");
  }
}

// A directory in the root directory, as phones have it.
class SdCard {
 public:
  SdCard() { std::filesystem::create_directory("/sdcard"); }
  ~SdCard() { std::filesystem::remove_all("/sdcard"); }
  SdCard(const SdCard&) = delete;
  SdCard& operator=(const SdCard&) = delete;
};

// First without and then with the second place for it.
TEST(CaptureFile, CannotBeOpened) {
  if (std::filesystem::exists("/sdcard")) GTEST_SKIP() << "there is a /sdcard here";
  const TemporaryDirectory directory;
  std::filesystem::create_directory(directory.path() + "/udi_fapi.pcap");
  const ToolResult result = RunTool({.arguments = {"stdin", "--pcap"},
                                     .input = Log().Header("14.5.12").Load(0ms).bytes(),
                                     .directory = directory.path()});
  EXPECT_EQ(result.err, "decode: fopen(output.pcap|/sdcard/udi_fapi.pcap) Failed errno:" +
                            std::to_string(ENOENT) +
                            "\ndecode: Log File Hip Version 14.5.12 detected\n");
  EXPECT_EQ(result.out, kBanner + "1970/01/01-00:00:00.000 Driver: Loaded\n");
  EXPECT_EQ(result.status, 0);

  if (geteuid() != 0) GTEST_SKIP() << "only root can make a /sdcard";
  const SdCard card;
  const ToolResult on_card = RunTool({.arguments = {"stdin", "--pcap"},
                                      .input = Log().Header("14.5.12").bytes(),
                                      .directory = directory.path()});
  EXPECT_EQ(on_card.err, "decode: Log File Hip Version 14.5.12 detected\n");
  EXPECT_EQ(ReadFile("/sdcard/udi_fapi.pcap"), kGlobalHeader);
}

TEST(CaptureFile, OpensInTcpdump) {
  if (!IsInstalled("tcpdump")) GTEST_SKIP() << "tcpdump is not installed";
  const TemporaryDirectory directory;
  const Log log = Log()
                      .Header("14.5.12")
                      .TimeRef(1000)
                      .Signal(1500ms, Fapi(0x1100).PadTo(32))
                      .Signal(1750ms, Fapi(0xABCD).PadTo(16, '\x5A'));
  RunTool({.arguments = {"stdin", "--pcap"}, .input = log.bytes(), .directory = directory.path()});
  ASSERT_EQ(std::system(("cd " + QuoteForShell(directory.path()) +
                         " && TZ=UTC0 tcpdump -tttt -r udi_fapi.pcap -x >text 2>&1")
                            .c_str()),
            0);
  const std::string read = ReadFile(directory.path() + "/text");
  // Newer versions of tcpdump print the link type's name, older ones its number.
  EXPECT_TRUE(read.find("USER0") != std::string::npos ||
              read.find("link-type 147") != std::string::npos)
      << read;
  for (const char* expected :
       {"1970-01-01 00:16:41.500000", "0x0000:  0011 ddcc bbaa ddcc bbaa",
        "1970-01-01 00:16:41.750000", "0x0000:  cdab ddcc bbaa ddcc bbaa 5a5a 5a5a 5a5a"}) {
    EXPECT_NE(read.find(expected), std::string::npos) << expected << " is not in\n" << read;
  }
}

}  // namespace
