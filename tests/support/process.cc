#include "support/process.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "files.h"

namespace {

[[noreturn]] void Fail(const char* what) {
  std::perror(what);
  std::abort();
}

int OpenOrFail(const std::string& path, int flags) {
  const int descriptor = open(path.c_str(), flags | O_CLOEXEC, 0644);
  if (descriptor < 0) Fail(path.c_str());
  return descriptor;
}

// An unnamed file in memory.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes = {})
      : descriptor_(memfd_create("test", MFD_CLOEXEC)) {
    if (descriptor_ < 0) Fail("memfd_create");
    if (pwrite(descriptor_, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
      Fail("pwrite");
    }
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  int descriptor() const { return descriptor_; }
  std::string Read() const {
    std::string bytes(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)), '\0');
    if (pread(descriptor_, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
      Fail("pread");
    }
    return bytes;
  }

 private:
  int descriptor_;
};

// Returns a path to the tool that ends in the given name, because valgrind replaces
// argument 0 by the path.
std::string PathNamed(const std::string& name) {
  static const TemporaryDirectory links;
  const std::string base = name.substr(name.rfind('/') + 1);
  std::string path = links.path() + "/" + (base.empty() ? "tool" : base);
  if (!std::filesystem::exists(path)) std::filesystem::create_symlink(VRKT_TEST_TOOL, path);
  return path;
}

std::vector<std::string> CommandLine(const ToolRun& run) {
  std::vector<std::string> words;
#ifdef VRKT_TEST_EMULATOR
  words = {VRKT_TEST_EMULATOR, "-0", run.name, VRKT_TEST_TOOL};
#else
  words = {run.name};
#endif
  words.insert(words.end(), run.arguments.begin(), run.arguments.end());
  return words;
}

}  // namespace

int StartTool(const ToolRun& run, int input, int output, int error) {
  std::vector<std::string> words = CommandLine(run);
  const std::string path = PathNamed(run.name);
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const pid_t process = fork();
  if (process < 0) Fail("fork");
  if (process > 0) return process;
  if (dup2(input, STDIN_FILENO) < 0 || dup2(output, STDOUT_FILENO) < 0 ||
      dup2(error, STDERR_FILENO) < 0 || chdir(run.directory.c_str()) != 0 ||
      setenv("TZ", run.time_zone.c_str(), 1) != 0) {
    _exit(126);
  }
  if (run.before_exec) run.before_exec();
#ifdef VRKT_TEST_EMULATOR
  execv(arguments[0], arguments.data());
#else
  execv(path.c_str(), arguments.data());
#endif
  _exit(127);
}

int WaitForTool(int process) {
  int status = 0;
  if (waitpid(process, &status, 0) < 0) Fail("waitpid");
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string QuoteForShell(const std::string& word) {
  std::string quoted = "'";
  for (const char c : word) {
    if (c == '\'') {
      quoted += "'\\''";
    } else {
      quoted += c;
    }
  }
  return quoted + "'";
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
  ToolRun prepared = run;
  if (prepared.directory.empty()) prepared.directory = working_directory.path();
  const MemoryFile input(run.input);
  const MemoryFile caught;
  const MemoryFile error;
  const int output =
      run.output_path.empty() ? caught.descriptor() : OpenOrFail(run.output_path, O_WRONLY);
  const int process = StartTool(prepared, input.descriptor(), output, error.descriptor());
  if (output != caught.descriptor()) close(output);

  ToolResult result;
  result.status = WaitForTool(process);
  result.out = caught.Read();
  result.err = error.Read();
  const std::string pcap_path = prepared.directory + "/udi_fapi.pcap";
  if (std::filesystem::is_regular_file(pcap_path)) result.pcap = ReadFile(pcap_path);
  return result;
}

TemporaryDirectory::TemporaryDirectory()
    : path_((std::filesystem::temp_directory_path() / "udi_log_test_XXXXXX").string()) {
  if (mkdtemp(path_.data()) == nullptr) Fail("mkdtemp");
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}
