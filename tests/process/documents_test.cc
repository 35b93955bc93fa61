// Runs the commands of the README and the cookbook, compares the dump in
// docs/log-format.md with the example log, and looks for the latest version where users
// read it.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "files.h"
#include "session_log.h"
#include "support/lines.h"
#include "support/process.h"
#ifdef VRKT_PLUGIN
#include "support/wireshark_user.h"
#endif

namespace {

const std::string kSource = VRKT_SOURCE;

// A block of shell commands and the output block that follows it, if any.
struct Recipe {
  std::string commands;
  std::string output;
  bool has_output = false;
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
      recipe.has_output = true;
    }
    recipes.push_back(recipe);
  }
  return recipes;
}

void WriteScript(const std::string& path, const std::string& commands) {
  WriteFile(path, "#!/bin/sh\n" + commands + "\n");
  ASSERT_EQ(chmod(path.c_str(), 0755), 0);
}

// The shell commands of the README and the cookbook, and a directory with programs that they
// use: the tested tool, and scripts that replace a phone.
class DocumentShell {
 public:
  DocumentShell() {
    std::filesystem::create_directory(bin());
    WriteScript(bin() + "/vrkt_wlan_udi_log_decode", "exec " + ToolCommand() + " \"$@\"");
    WriteScript(bin() + "/vrkt_wlan_udi_log", "cat session.udi");
    WriteScript(bin() + "/vrkt_wlan_udi_log_cut", "exec " + ShellCommand(VRKT_CUT) + " \"$@\"");
    // Another python3 in the path may lack what the system's packages have.
    WriteScript(bin() + "/python3", "exec /usr/bin/python3 \"$@\"");
    WriteScript(bin() + "/adb", R"([ "$1" = exec-out ] && shift && exec "$@")");
    // The README follows a growing file with `tail -F`, which never ends.
    WriteScript(bin() + "/tail",
                "[ \"$3\" = -F ] && exec /usr/bin/tail \"$1\" \"$2\" \"$4\"\n"
                "exec /usr/bin/tail \"$@\"");
#ifdef VRKT_QUERY
    const std::filesystem::path query = VRKT_QUERY;
    for (const char* program : {"/vrkt_wlan_udi_log_query", "/vrkt_wlan_udi_log_report"}) {
      WriteScript(bin() + program,
                  "exec " + QuoteForShell(query.parent_path().string() + program) + " \"$@\"");
    }
#endif
#ifdef VRKT_PLUGIN
    WriteScript(bin() + "/tshark", "[ \"$(id -u)\" != 0 ] || chmod -R a+rX \"$TMPDIR\"\nexec " +
                                       user_.Command("/usr/bin/tshark \"$@\""));
#endif
    for (const char* file : {"README.md", "docs/cookbook.md"}) {
      for (const Recipe& recipe : ReadRecipes(ReadFile(kSource + '/' + file))) {
        if (recipe.commands.find("mktemp -d") != std::string::npos) {
          setup_ = recipe.commands;
        } else {
          recipes_.push_back(recipe);
        }
      }
    }
    const std::string_view kBuild = "PATH=$PWD/build/release:";
    setup_.replace(setup_.find(kBuild), kBuild.size(), "PATH=" + QuoteForShell(bin()) + ":");
  }

  std::string bin() const { return directory_.path() + "/bin"; }
  const std::string& directory() const { return directory_.path(); }
  const std::vector<Recipe>& recipes() const { return recipes_; }
  // Returns a command that sets up a directory as in the cookbook and runs the commands
  // there, with their output in the files `output` and `errors`. `parallel` gets its number of
  // jobs, because it finds it by `lscpu`, which needs /sys.
  std::string MakeCommand(const std::string& commands) const {
    WriteFile(directory() + "/commands",
              setup_ + "set -o pipefail\nexec >" + QuoteForShell(directory() + "/output") + " 2>" +
                  QuoteForShell(directory() + "/errors") + "\n" + commands);
    return "cd " + QuoteForShell(kSource) + " && export TMPDIR=" + QuoteForShell(directory()) +
           " ASAN_OPTIONS=verify_asan_link_order=0 PARALLEL=-j2 && exec bash " +
           QuoteForShell(directory() + "/commands");
  }

 private:
  TemporaryDirectory directory_;
#ifdef VRKT_PLUGIN
  WiresharkUser user_;
#endif
  std::string setup_;
  std::vector<Recipe> recipes_;
};

TEST(Documents, TheCommands) {
  const DocumentShell shell;
  EXPECT_GE(shell.recipes().size(), 30U);
  std::vector<std::string> missing;
  for (const char* program : {"tcpdump", "tshark", "pv", "gnuplot", "sqlite3", "jq", "parallel"}) {
    if (!IsInstalled(program)) missing.emplace_back(program);
  }
  if (std::system("/usr/bin/python3 -c 'import pandas' 2>/dev/null") != 0) {
    missing.emplace_back("python3");
  }
  std::vector<std::string> left_out;
#ifndef VRKT_PLUGIN
  left_out.emplace_back("tshark");
#endif
#ifdef VRKT_QUERY
  const bool can_query = IsInstalled("sqlite3");
#else
  const bool can_query = false;  // SQLite's shell cannot load an extension with sanitizers
#endif
  if (!can_query) {
    left_out.insert(left_out.end(), {"vrkt_wlan_udi_log_query", "vrkt_wlan_udi_log_report"});
  }
  for (const Recipe& recipe : shell.recipes()) {
    const auto uses = [&](const std::string& program) {
      return recipe.commands.find(program + ' ') != std::string::npos;
    };
    if (std::ranges::any_of(missing, uses) || std::ranges::any_of(left_out, uses)) continue;
    const int status = std::system(shell.MakeCommand(recipe.commands).c_str());
    // diff ends with status 1 if there are differences.
    EXPECT_LE(WEXITSTATUS(status), uses("diff") ? 1 : 0)
        << recipe.commands << ReadFile(shell.directory() + "/errors");
    if (!recipe.has_output) continue;
    EXPECT_EQ(ReadFile(shell.directory() + "/output"), recipe.output) << recipe.commands;
  }
  for (const std::string& program : missing) {
    EXPECT_EQ(std::getenv("CI"), nullptr)
        << program << (program == "python3" ? " or its pandas" : "") << " is not installed";
  }
}

// The lines that these documents quote are those of the example.
TEST(Documents, TheLinesOfTheExample) {
  const std::string session = ReadFile(kSource + "/examples/session.txt");
  for (const char* file : {"README.md", "docs/log-format.md"}) {
    int count = 0;
    for (std::string line : SplitLines(ReadFile(kSource + '/' + file))) {
      line.erase(0, line.find_first_not_of(' '));
      if (!line.starts_with("2026/06/01-") || !line.ends_with("spare_3:0")) continue;
      EXPECT_NE(session.find(line + '\n'), std::string::npos) << file << ": " << line;
      ++count;
    }
    EXPECT_GE(count, 1) << file;
  }
}

// The dump's lines have the form "OFFSET  BYTES  meaning". They must cover the start of
// the log without gaps.
TEST(Documents, TheDumpOfTheLogFormat) {
  const std::string text = ReadFile(kSource + "/docs/log-format.md");
  const std::size_t first = text.find("```dump\n");
  ASSERT_NE(first, std::string::npos);
  const std::string dump = text.substr(first + 8, text.find("```\n", first + 8) - first - 8);
  const std::string log = SessionLog().bytes();
  std::size_t offset = 0;
  for (const std::string& line : SplitLines(dump)) {
    ASSERT_EQ(std::stoul(line.substr(0, 6), nullptr, 16), offset) << line;
    const std::string bytes = FromHex(line.substr(6, line.find("  ", 8) - 6));
    ASSERT_FALSE(bytes.empty()) << line;
    EXPECT_EQ(log.substr(offset, bytes.size()), bytes) << line;
    offset += bytes.size();
  }
  EXPECT_GE(offset, 100U);
}

// Each of these names the latest version once, so that a new version is added to all.
TEST(Documents, TheLatestVersion) {
  const std::string version = kHipVersionNames[kHipVersionCount - 1].dotted;
  for (const char* file : {"README.md", "CHANGELOG.md", "docs/vrkt_wlan_udi_log_decode.1"}) {
    const std::string text = ReadFile(kSource + '/' + file);
    EXPECT_NE(text.find("to " + version), std::string::npos) << file << " lacks: to " << version;
  }
}

// The format's samples are checked, and the errors that lnav shows are the failures.
TEST(Documents, TheFormatForLnav) {
  if (!IsInstalled("lnav")) {
    EXPECT_EQ(std::getenv("CI"), nullptr);
    GTEST_SKIP() << "lnav is not installed";
  }
  const TemporaryDirectory home;
  const std::string output = home.path() + "/output";
  const std::string command =
      "cd " + QuoteForShell(kSource) + " && export HOME=" + QuoteForShell(home.path()) +
      " && { lnav -i packaging/vrkt_wlan_udi_log.json && lnav -C; } >/dev/null 2>&1 &&"
      " lnav -n -c \";SELECT log_level, signal FROM vrkt_wlan_udi_log"
      " WHERE log_level IN ('error', 'warning') ORDER BY log_line\" -c ':write-csv-to -'"
      " examples/session.txt >" +
      QuoteForShell(output);
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(ReadFile(output),
            "log_level,signal\n"
            "error,ma_unitdata_cfm\n"
            "error,mlme_disconnected_ind\n"
            "error,mlme_connect_cfm\n"
            "warning,Unknown Hip Signal \n"
            "warning,Unknown Driver Signal \n");
}

// dpkg-parsechangelog reports what is not in Debian's form on standard error.
TEST(Documents, TheChangeLogInDebiansForm) {
  if (!IsInstalled("dpkg-parsechangelog")) {
    EXPECT_EQ(std::getenv("CI"), nullptr);
    GTEST_SKIP() << "dpkg-parsechangelog (of dpkg-dev) is not installed";
  }
  const TemporaryDirectory directory;
  const std::string parsed = directory.path() + "/parsed";
  const std::string command = "cd " + QuoteForShell(kSource) +
                              " && awk -v version=" VRKT_VERSION
                              " -f packaging/changelog.awk CHANGELOG.md | "
                              "dpkg-parsechangelog --all -l - >" +
                              QuoteForShell(parsed) + " 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0);
  const std::string text = ReadFile(parsed);
  EXPECT_TRUE(text.starts_with("Source: vrkt-wlan-udi-log-decode\nVersion: " VRKT_VERSION)) << text;
  EXPECT_NE(text.find("\n   * "), std::string::npos) << text;
}

}  // namespace
