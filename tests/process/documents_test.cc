// Runs the commands of the README and the cookbook, compares the dump in
// docs/log-format.md with the example log, and looks for the latest version where users
// read it.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "files.h"
#include "session_log.h"
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

bool HasPandas(const std::string& python) {
  return std::system((python + " -c 'import pandas' 2>/dev/null").c_str()) == 0;
}

// The shell commands of the README and the cookbook, and a directory with programs that they
// use: the tested tool, and scripts that replace a phone.
class DocumentShell {
 public:
  DocumentShell() {
    std::filesystem::create_directory(bin());
    WriteScript(bin() + "/vrkt_wlan_udi_log_decode", "exec " + ToolCommand() + " \"$@\"");
    WriteScript(bin() + "/vrkt_wlan_udi_log", "cat session.udi");
    // Another python3 in the path may lack what the system's packages have.
    if (HasPandas("/usr/bin/python3")) {
      WriteScript(bin() + "/python3", "exec /usr/bin/python3 \"$@\"");
    }
    WriteScript(bin() + "/adb", R"([ "$1" = exec-out ] && shift && exec "$@")");
    // The README follows a growing file with `tail -F`, which never ends.
    WriteScript(bin() + "/tail",
                "[ \"$3\" = -F ] && exec /usr/bin/tail \"$1\" \"$2\" \"$4\"\n"
                "exec /usr/bin/tail \"$@\"");
#ifdef VRKT_QUERY
    WriteScript(bin() + "/vrkt_wlan_udi_log_query",
                "exec " + QuoteForShell(VRKT_QUERY) + " \"$@\"");
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
  // Returns the commands of the recipe that contains this text.
  const std::string& Find(std::string_view text) const {
    for (const Recipe& recipe : recipes_) {
      if (recipe.commands.find(text) != std::string::npos) return recipe.commands;
    }
    std::abort();
  }

  // Returns a command that sets up a directory as in the cookbook and runs the commands
  // there, with their output in the files `output` and `errors`.
  std::string MakeCommand(const std::string& commands) const {
    WriteFile(directory() + "/commands",
              setup_ + "set -o pipefail\nexec >" + QuoteForShell(directory() + "/output") + " 2>" +
                  QuoteForShell(directory() + "/errors") + "\n" + commands);
    return "cd " + QuoteForShell(kSource) + " && export TMPDIR=" + QuoteForShell(directory()) +
           " ASAN_OPTIONS=verify_asan_link_order=0 && exec bash " +
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

// SQLite's shell cannot load an extension with sanitizers.
bool CanQuery() {
#ifdef VRKT_QUERY
  return IsInstalled("sqlite3");
#else
  return false;
#endif
}

TEST(Documents, TheCommands) {
  const DocumentShell shell;
  EXPECT_GE(shell.recipes().size(), 30U);
  std::vector<std::string> missing;
  for (const char* program :
       {"tcpdump", "tshark", "pv", "gnuplot", "pkill", "sqlite3", "jq", "parallel"}) {
    if (!IsInstalled(program)) missing.emplace_back(program);
  }
  if (!HasPandas("/usr/bin/python3") && !HasPandas("python3")) missing.emplace_back("python3");
  for (const Recipe& recipe : shell.recipes()) {
    const auto uses = [&](const std::string& program) {
      return recipe.commands.find(program + ' ') != std::string::npos;
    };
    // Another test stops a live capture.
    if (uses("pkill") || std::ranges::any_of(missing, uses)) continue;
#ifndef VRKT_PLUGIN
    if (uses("tshark")) continue;
#endif
    if (uses("vrkt_wlan_udi_log_query") && !CanQuery()) continue;
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

bool WaitUntil(const std::function<bool()>& holds) {
  for (int tries = 0; tries < 1000; ++tries) {
    if (holds()) return true;
    usleep(10000);
  }
  return false;
}

bool IgnoresInterrupt(const std::filesystem::path& process) {
#ifdef VRKT_TEST_EMULATOR
  // The emulator keeps this to itself. It starts after the shell has set it.
  std::error_code error;
  const auto program = std::filesystem::read_symlink(process / "exe", error).filename();
  if (program == std::filesystem::path(VRKT_TEST_EMULATOR).filename()) return true;
#endif
  const std::string status = ReadFile(process / "status");
  const std::string_view kIgnored = "\nSigIgn:\t";
  const std::size_t at = status.find(kIgnored);
  if (at == std::string::npos) return false;  // the process has ended
  const auto signals = std::stoull(status.substr(at + kIgnored.size(), 16), nullptr, 16);
  return (signals >> (SIGINT - 1) & 1) != 0;
}

bool HasProcessThatIgnoresInterrupt(pid_t session) {
  return std::ranges::any_of(
      std::filesystem::directory_iterator("/proc"), [session](const auto& entry) {
        const std::string name = entry.path().filename();
        const bool is_process = name.find_first_not_of("0123456789") == std::string::npos;
        return is_process && getsid(std::stoi(name)) == session && IgnoresInterrupt(entry.path());
      });
}

// Shell commands in a session of their own.
class ShellSession {
 public:
  explicit ShellSession(const std::string& command) {
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    process_ = fork();
    if (process_ < 0) std::abort();
    if (process_ == 0) {
      close(ends[0]);
      setsid();
      std::signal(SIGINT, SIG_DFL);  // a background shell starts tests with it ignored
      execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
      _exit(127);
    }
    close(ends[1]);
    all_ended_ = ends[0];
  }
  ~ShellSession() {
    kill(-process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    close(all_ended_);
  }
  ShellSession(const ShellSession&) = delete;
  ShellSession& operator=(const ShellSession&) = delete;

  pid_t id() const { return process_; }
  // Waits for all processes of the session: the shell may end before others, which still
  // write. Each has the other end of the pipe open.
  bool WaitForEnd() const {
    pollfd end = {.fd = all_ended_, .events = POLLIN, .revents = 0};
    return poll(&end, 1, 30000) == 1;
  }

 private:
  pid_t process_ = -1;
  int all_ended_ = -1;
};

// The lines that these documents quote are those of the example.
TEST(Documents, TheLinesOfTheExample) {
  const std::string session = ReadFile(kSource + "/examples/session.txt");
  for (const char* file : {"README.md", "docs/log-format.md"}) {
    std::istringstream text(ReadFile(kSource + '/' + file));
    int count = 0;
    for (std::string line; std::getline(text, line);) {
      line.erase(0, line.find_first_not_of(' '));
      if (!line.starts_with("2026/06/01-") || !line.ends_with("spare_3:0")) continue;
      EXPECT_NE(session.find(line + '\n'), std::string::npos) << file << ": " << line;
      ++count;
    }
    EXPECT_GE(count, 2) << file;
  }
}

// Both ways to stop a live capture write everything that the capture sent.
TEST(Documents, StoppingALiveCaptureLosesNothing) {
  if (!IsInstalled("pkill")) GTEST_SKIP() << "pkill is not installed";
  const DocumentShell shell;
  // A capture that sends the session and then waits for more.
  WriteScript(shell.bin() + "/vrkt_wlan_udi_log",
              "cat session.udi\nmkfifo never\n: >\"$TMPDIR/sent\"\nread line <never");
  const auto interrupt_group = [](pid_t group) {
    // The capture can be faster than the shell that keeps the interrupt from the tool.
    EXPECT_TRUE(WaitUntil([group] { return HasProcessThatIgnoresInterrupt(group); }));
    kill(-group, SIGINT);
  };
  const auto stop_capture = [&](pid_t session) {
    // Only the processes of this test: others may run at the same time.
    WriteScript(shell.bin() + "/pkill",
                "exec /usr/bin/pkill -s " + std::to_string(session) + " \"$@\"");
    // From a file, because pkill would also find the text in an argument.
    const std::string file = shell.directory() + "/stop";
    WriteFile(file, shell.Find("pkill"));
    EXPECT_EQ(
        std::system(
            ("PATH=" + QuoteForShell(shell.bin()) + ":$PATH sh " + QuoteForShell(file)).c_str()),
        0);
  };
  const std::string session = ReadFile(kSource + "/examples/session.txt");
  std::string mlme;
  for (std::size_t at = 0; at < session.size(); at = session.find('\n', at) + 1) {
    const std::string line = session.substr(at, session.find('\n', at) + 1 - at);
    if (line.find("mlme_") != std::string::npos) mlme += line;
  }
  const struct {
    std::string commands;
    std::function<void(pid_t)> stop;
    std::string file;
    std::string text;
    std::uintmax_t capture_size;
  } kCases[] = {
      {shell.Find("trap '' INT; exec"), interrupt_group, "session.txt", session, 6706},
      {shell.Find("| grep mlme_)"), interrupt_group, "mlme.txt", mlme, 0},
      {"vrkt_wlan_udi_log stdout | vrkt_wlan_udi_log_decode stdin --pcap >session.txt\n",
       stop_capture, "session.txt", session, 6706},
  };
  for (const auto& c : kCases) {
    const std::string sent = shell.directory() + "/sent";
    std::filesystem::remove(sent);
    const std::string command = shell.MakeCommand("pwd >\"$TMPDIR/where\"\n" + c.commands);
    const ShellSession live(command);
    EXPECT_TRUE(WaitUntil([&] { return std::filesystem::exists(sent); })) << c.commands;
    c.stop(live.id());
    EXPECT_TRUE(live.WaitForEnd()) << c.commands;
    std::string where = ReadFile(shell.directory() + "/where");
    where.pop_back();
    EXPECT_EQ(ReadFile(where + '/' + c.file), c.text) << c.commands;
    EXPECT_EQ(ReadFile(where + "/udi_fapi.pcap").size(), c.capture_size) << c.commands;
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

// Each of these names the latest version once, so that a new version is added to all.
TEST(Documents, TheLatestVersion) {
  const std::string version = kHipVersionNames[kHipVersionCount - 1].dotted;
  for (const char* file : {"README.md", "CHANGELOG.md", "docs/vrkt_wlan_udi_log_decode.1"}) {
    const std::string text = ReadFile(kSource + '/' + file);
    EXPECT_NE(text.find("to " + version), std::string::npos) << file << " lacks: to " << version;
  }
}

// dpkg-parsechangelog reports what is not in Debian's form on standard error.
TEST(Documents, TheChangeLogInDebiansForm) {
  if (!IsInstalled("dpkg-parsechangelog")) {
    EXPECT_EQ(std::getenv("CI"), nullptr);
    GTEST_SKIP() << "dpkg-parsechangelog is not installed";
  }
  const TemporaryDirectory directory;
  const std::string parsed = directory.path() + "/parsed";
  const std::string command =
      "cd " + QuoteForShell(kSource) +
      " && awk -v version=" VRKT_VERSION " -f packaging/changelog.awk CHANGELOG.md >" +
      QuoteForShell(directory.path() + "/changelog") + " && dpkg-parsechangelog --all -l " +
      QuoteForShell(directory.path() + "/changelog") + " >" + QuoteForShell(parsed) + " 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0);
  const std::string text = ReadFile(parsed);
  EXPECT_TRUE(text.starts_with("Source: vrkt-wlan-udi-log-decode\nVersion: " VRKT_VERSION)) << text;
  EXPECT_NE(text.find("\n   * "), std::string::npos) << text;
}

}  // namespace
