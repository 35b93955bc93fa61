// The comparison of `./dev text-diff`, on texts of three records.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>

#include "files.h"
#include "log_builder.h"
#include "support/process.h"

namespace {

TEST(ReferenceText, Differences) {
  const std::string banner = "Decode Tool version:1\n";
  const std::string text = banner +
                           "1970/01/01-00:00:00.000 ma_unitdata_req vif:1 priority:qos_up0\n"
                           "1970/01/01-00:00:00.001 1970/01/01-00:00:00.002 mlme_get_req vif:2\n";
  const auto replace = [&text](const char* before, const char* now) {
    return std::regex_replace(text, std::regex(before), now);
  };
  const auto count_stamps = [](const std::string& tool, int count) {
    return "14.0.0: the text of the " + tool + " tool has " + std::to_string(count) +
           " stamps like 1970/01/01-00:00:00.000 for 3 records\n";
  };
  const std::string removed = "(no file)";
  const struct {
    std::string now;  // the text of version 14.0.0
    std::string before;
    std::string out;
    std::string err;
    int status;
  } kCases[] = {
      {text, text, "Nothing differs.\n", "", 0},
      {replace("qos_up0", "qos_up1"), text,
       "0x1000 in 14.0.0\n-ma_unitdata_req vif:1 priority:qos_up0\n"
       "+ma_unitdata_req vif:1 priority:qos_up1\n\n",
       "", 1},
      {replace(" priority:qos_up0", ""), text,
       "0x1000 in 14.0.0\n-ma_unitdata_req vif:1 priority:qos_up0\n+ma_unitdata_req vif:1\n\n", "",
       1},
      {replace("1 1970", "1 mlme_get_cfm 1970"), text, "0x2101 in 14.0.0\n-\n+mlme_get_cfm \n\n",
       "", 1},
      {replace("1970/", "1971/"), text,
       "First other stamp in 14.0.0\n-1970/01/01-00:00:00.000\n+1971/01/01-00:00:00.000\n\n", "",
       1},
      {replace("version:1", "version:2"), text,
       "Start of the text in 14.0.0\n-Decode Tool version:1\n+Decode Tool version:2\n\n", "", 1},
      {text, banner, "14.0.0: rejected by the old tool\n\n", "", 1},
      {banner, text, "14.0.0: rejected by the new tool\n\n", "", 1},
      {banner, banner, "", count_stamps("new", 0), 2},
      {replace("1970/01/01-", ""), text, "", count_stamps("new", 0), 2},
      {text, text.substr(0, text.find("1970/01/01-00:00:00.002")), "", count_stamps("old", 2), 2},
      {text, "", "", count_stamps("old", 0), 2},
      {text, removed, "", "old/14.0.0.txt: No such file or directory\n", 2},
  };
  for (const auto& c : kCases) {
    const TemporaryDirectory directory;
    for (const char* texts : {"/new", "/old"}) {
      std::filesystem::create_directory(directory.path() + texts);
      for (const HipVersionName& name : kHipVersionNames) {
        const std::string version = name.dotted;
        Log log = Log().Header(version);
        for (const Fapi& signal : {Fapi(0x1000), Fapi(0x2101), Fapi(0x2001)})
          log.Signal(0ms, signal);
        const std::string path = directory.path() + texts + '/' + version;
        std::string printed = text;
        if (version == "14.0.0") printed = texts == std::string("/new") ? c.now : c.before;
        WriteFile(path + ".udi", log.bytes());
        if (printed != removed) WriteFile(path + ".txt", printed);
      }
    }
    const std::string command = "cd " + QuoteForShell(directory.path()) + " && " +
                                ShellCommand(VRKT_REFERENCE_TEXT) + " diff new old >out 2>err";
    const int status = std::system(command.c_str());
    EXPECT_EQ(WEXITSTATUS(status), c.status) << c.now << c.before;
    EXPECT_EQ(ReadFile(directory.path() + "/out"), c.out) << c.now << c.before;
    EXPECT_EQ(ReadFile(directory.path() + "/err"), c.err) << c.now << c.before;
  }
}

}  // namespace
