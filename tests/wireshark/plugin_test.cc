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
#include "session_log.h"
#include "support/decode_in_process.h"
#include "support/process.h"
#include "support/reference_log.h"

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

bool IsInstalled(const std::string& program) {
  return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
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
  const Lines shown = RunTshark({"-r", PathOf("all.udi"), "-T", "fields", "-e", "udi.line"});
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
  for (const std::string& log : MakeDamagedLogs(400)) {
    file += ToBytes(static_cast<std::uint32_t>(log.size()), 4) + log;
    const Lines lines = ToolLines(log);
    expected.insert(expected.end(), lines.begin(), lines.end());
  }
  WriteFile(PathOf("many"), file);
  std::filesystem::copy_file(VRKT_SOURCE "/tests/wireshark/many_logs.lua", PathOf("many_logs.lua"));
  RemovePlugin();
  setenv("VRKT_PLUGIN", PathOf("udi.lua").c_str(), 1);
  const Lines shown = RunTshark({"-2", "-X", "lua_script:" + PathOf("many_logs.lua"), "-r",
                                 PathOf("many"), "-T", "fields", "-e", "udi.line"});
  ASSERT_EQ(shown.size(), expected.size());
  for (std::size_t i = 0; i < shown.size(); ++i)
    ASSERT_EQ(shown[i], expected[i]) << "frame " << i + 1;
}

// As above, by the programs' own reader.
TEST_F(Plugin, DamagedFiles) {
  const std::vector<std::string> logs = MakeDamagedLogs(30);
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

}  // namespace
