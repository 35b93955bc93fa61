#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "files.h"
#include "support/process.h"

namespace {

TEST(GenerateVocabulary, LeavesNothingAfterAFailure) {
  const struct {
    std::string part;
    std::string plugin;
    std::string setup;
    std::string err;
  } kCases[] = {
      {"absent.lua", "udi.lua", "", "absent.lua: No such file or directory\n"},
      {".", "udi.lua", "", ".: Is a directory\n"},
      {"reader.lua", "absent/udi.lua", "", "absent/udi.lua.part: No such file or directory\n"},
      // A name of the plugin's own that is also a field of a signal.
      {"clash.lua", "udi.lua", "", "clash.lua has a field \"udi.vif\", and so does a signal\n"},
      // A file of more than 8 blocks cannot be written.
      {"reader.lua", "udi.lua", "trap '' XFSZ; ulimit -f 8; ", "udi.lua.part: File too large\n"},
  };
  for (const auto& c : kCases) {
    const TemporaryDirectory directory;
    WriteFile(directory.path() + "/reader.lua", "return\n");
    WriteFile(directory.path() + "/clash.lua",
              "own = {'udi.line', \"udi.driver.vif\", \"udi.vif\"}\n");
    const std::string command = "cd " + QuoteForShell(directory.path()) + " && { " + c.setup +
                                ShellCommand(VRKT_GENERATE_VOCABULARY) + " " + c.plugin + " " +
                                c.part + "; } 2>err";
    const int status = std::system(command.c_str());
    EXPECT_EQ(WEXITSTATUS(status), 1) << c.err;
    EXPECT_EQ(ReadFile(directory.path() + "/err"), c.err);
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
      const std::string name = entry.path().filename();
      EXPECT_TRUE(name == "reader.lua" || name == "clash.lua" || name == "err")
          << name << " after " << c.err;
    }
  }
}

}  // namespace
