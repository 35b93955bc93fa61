#include "support/process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include "files.h"

namespace {

[[noreturn]] void Fail(const char* what) {
  std::perror(what);
  std::abort();
}

// In the child.
void Redirect(int stream, const std::string& path, int flags) {
  if (dup2(open(path.c_str(), flags | O_CLOEXEC, 0644), stream) < 0) _exit(126);
}

}  // namespace

int StartTool(const ToolRun& run) {
#ifdef VRKT_TEST_EMULATOR
  const char* const program = VRKT_TEST_EMULATOR;
  std::vector<std::string> words = {program, "-0", run.name, VRKT_TEST_TOOL};
#else
  // Its name is that of most runs, because valgrind replaces argument 0 by the path.
  const char* const program = VRKT_TEST_LINK;
  std::vector<std::string> words = {run.name};
#endif
  words.insert(words.end(), run.arguments.begin(), run.arguments.end());
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const pid_t process = fork();
  if (process < 0) Fail("fork");
  if (process > 0) return process;
  if (chdir(run.directory.c_str()) != 0 || setenv("TZ", "UTC0", 1) != 0) _exit(126);
  if (run.before_exec) run.before_exec();
  execv(program, arguments.data());
  _exit(127);
}

int WaitForTool(int process) {
  int status = 0;
  if (waitpid(process, &status, 0) < 0) Fail("waitpid");
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string QuoteForShell(const std::string& word) {
  return "'" + std::regex_replace(word, std::regex("'"), "'\\''") + "'";
}

std::string ShellCommand(const std::string& program) {
#ifdef VRKT_TEST_EMULATOR
  return QuoteForShell(VRKT_TEST_EMULATOR) + " " + QuoteForShell(program);
#else
  return QuoteForShell(program);
#endif
}

std::string ToolCommand() { return ShellCommand(VRKT_TEST_TOOL); }

bool IsInstalled(const std::string& program) {
  return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

ToolResult RunTool(const ToolRun& run) {
  const TemporaryDirectory working_directory;
  const TemporaryDirectory streams;
  const auto path_of = [&](const char* stream) { return streams.path() + stream; };
  WriteFile(path_of("/in"), run.input);
  ToolRun prepared = run;
  if (prepared.directory.empty()) prepared.directory = working_directory.path();
  prepared.before_exec = [&] {
    Redirect(STDIN_FILENO, path_of("/in"), O_RDONLY);
    Redirect(STDOUT_FILENO, path_of("/out"), O_WRONLY | O_CREAT);
    Redirect(STDERR_FILENO, path_of("/err"), O_WRONLY | O_CREAT);
    if (run.before_exec) run.before_exec();
  };
  const int status = WaitForTool(StartTool(prepared));
  const std::string pcap_path = prepared.directory + "/udi_fapi.pcap";
  const bool has_pcap = std::filesystem::is_regular_file(pcap_path);
  return {status, ReadFile(path_of("/out")), ReadFile(path_of("/err")),
          has_pcap ? ReadFile(pcap_path) : ""};
}

std::string ReadUntil(int descriptor, const std::string& text) {
  std::string seen;
  while (seen.find(text) == std::string::npos) {
    pollfd ready{descriptor, POLLIN, 0};
    char buffer[4096];
    if (poll(&ready, 1, 10000) <= 0) break;
    const ssize_t count = read(descriptor, buffer, sizeof buffer);
    if (count <= 0) break;
    seen.append(buffer, static_cast<std::size_t>(count));
  }
  return seen;
}

TemporaryDirectory::TemporaryDirectory()
    : path_((std::filesystem::temp_directory_path() / "udi_log_test_XXXXXX").string()) {
  if (mkdtemp(path_.data()) == nullptr) Fail("mkdtemp");
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}
