// The README's commands do what they say, and docs/log-format.md tells the truth
// about the bytes of the example log.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "session_log.h"
#include "support/process.h"

namespace {

const std::string kSource = VRKT_SOURCE;

// A block of shell commands, and the whole output that follows it in the text.
struct Recipe {
  std::string commands;
  std::string output;
  bool tells_output = false;
};

std::vector<Recipe> ReadRecipes(const std::string& markdown) {
  constexpr std::string_view kCommands = "\n```sh\n";
  constexpr std::string_view kOutput = "```text\n";
  constexpr std::string_view kEnd = "```\n";
  std::vector<Recipe> recipes;
  for (std::size_t at = markdown.find(kCommands); at != std::string::npos;
       at = markdown.find(kCommands, at)) {
    at += kCommands.size();
    std::size_t end = markdown.find(kEnd, at);
    Recipe recipe;
    recipe.commands = markdown.substr(at, end - at);
    at = end + kEnd.size();
    if (markdown.compare(at, kOutput.size(), kOutput) == 0) {
      at += kOutput.size();
      end = markdown.find(kEnd, at);
      recipe.output = markdown.substr(at, end - at);
      recipe.tells_output = true;
    }
    recipes.push_back(recipe);
  }
  return recipes;
}

void WriteScript(const std::string& path, const std::string& commands) {
  WriteFile(path, "#!/bin/sh\n" + commands + "\n");
  ASSERT_EQ(chmod(path.c_str(), 0755), 0);
}

TEST(Documents, TheCommandsOfTheReadme) {
  const std::vector<Recipe> recipes = ReadRecipes(ReadFile(kSource + "/README.md"));
  ASSERT_EQ(recipes.size(), 13U);
  const bool has_tcpdump = std::system("command -v tcpdump >/dev/null 2>&1") == 0;
  for (const Recipe& recipe : recipes) {
    const bool wants_tcpdump = recipe.commands.find("tcpdump") != std::string::npos;
    if (wants_tcpdump && !has_tcpdump) continue;
    const TemporaryDirectory directory;
    const std::string& path = directory.path();
    const std::string log = SessionLog().bytes();
    WriteFile(path + "/session.udi", log);
    // Another log in which a network was heard less well.
    std::string other = log;
    other.replace(other.find("\xD0\xFF"), 2, "\xC4\xFF");
    WriteFile(path + "/other.udi", other);
    ASSERT_EQ(std::system(("gzip -k " + QuoteForShell(path + "/session.udi")).c_str()), 0);
    // What stands for a phone, its capture command, and a tail that ends.
    std::filesystem::create_directory(path + "/bin");
    WriteScript(path + "/bin/vrkt_wlan_udi_log", "cat " + QuoteForShell(path + "/session.udi"));
    WriteScript(path + "/bin/adb", "[ \"$1\" = exec-out ] && shift && exec \"$@\"");
    WriteScript(path + "/bin/tail",
                "[ \"$3\" = -F ] && exec /usr/bin/tail \"$1\" \"$2\" \"$4\"\n"
                "exec /usr/bin/tail \"$@\"");
    WriteScript(path + "/bin/vrkt_wlan_udi_log_decode", "exec " + ToolCommand() + " \"$@\"");
    WriteFile(path + "/commands", "set -o pipefail\n" + recipe.commands);
    const int status = std::system(("cd " + QuoteForShell(path) +
                                    " && PATH=$PWD/bin:$PATH TZ=UTC0 "
                                    "ASAN_OPTIONS=verify_asan_link_order=0 "
                                    "bash commands >output 2>errors")
                                       .c_str());
    // diff tells differences by a status of 1.
    EXPECT_LE(WEXITSTATUS(status), recipe.commands.starts_with("signals()") ? 1 : 0)
        << recipe.commands << ReadFile(path + "/errors");
    const std::string output = ReadFile(path + "/output");
    if (recipe.tells_output) {
      EXPECT_EQ(output, recipe.output) << recipe.commands;
    } else {
      EXPECT_NE(output, "") << recipe.commands;
    }
  }
}

// The dump's lines read "OFFSET  BYTES  meaning"; together they are the log's
// beginning, each byte once.
TEST(Documents, TheDumpOfTheLogFormat) {
  const std::string text = ReadFile(kSource + "/docs/log-format.md");
  const std::size_t first = text.find("```dump\n");
  ASSERT_NE(first, std::string::npos);
  const std::string dump = text.substr(first + 8, text.find("```\n", first + 8) - first - 8);
  const std::string log = SessionLog().bytes();
  std::size_t offset = 0;
  for (std::size_t at = 0; at < dump.size(); at = dump.find('\n', at) + 1) {
    const std::string line = dump.substr(at, dump.find('\n', at) - at);
    ASSERT_EQ(std::stoul(line.substr(0, 6), nullptr, 16), offset) << line;
    const std::string bytes = FromHex(line.substr(6, line.find("  ", 8) - 6));
    ASSERT_FALSE(bytes.empty()) << line;
    EXPECT_EQ(log.substr(offset, bytes.size()), bytes) << line;
    offset += bytes.size();
  }
  EXPECT_GE(offset, 100U);
}

}  // namespace
