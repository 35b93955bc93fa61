#ifndef VRKT_TESTS_SUPPORT_PROCESS_H_
#define VRKT_TESTS_SUPPORT_PROCESS_H_

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Runs the built tool as a user does.

struct ToolRun {
  std::vector<std::string> arguments = {"stdin"};
  std::string input{};                  // standard input, from a file
  std::string time_zone = "UTC0";       // TZ
  std::string directory{};              // the working directory; a new one if empty
  std::string name = "decode";          // argument 0
  std::string output_path{};            // where standard output goes; it is caught if empty
  std::function<void()> before_exec{};  // in the child, after its streams are set up
};

struct ToolResult {
  int status = 0;  // of the exit; 128 plus the signal's number if one ended the tool
  std::string out{};
  std::string err{};
  std::string pcap{};  // what udi_fapi.pcap in the working directory holds
};

ToolResult RunTool(const ToolRun& run);

// A path or argument as a word for a shell, whatever characters it has.
std::string QuoteForShell(const std::string& word);

// The tool as a command for a shell.
std::string ToolCommand();

// The banner that opens every standard output, and the versions that usage text
// and reports list.
inline constexpr std::string_view kBanner = "Decode Tool version:14.5.12.1\n";
// clang-format off
inline constexpr const char* kHipVersions[] = {
    "13.1.0",
    "13.2.0",
    "13.3.0",
    "14.0.0",
    "14.0.4",
    "14.0.6",
    "14.1.8",
    "14.2.9",
    "14.3.10",
    "14.4.11",
    "14.4.12",
    "14.5.12",
};
// clang-format on

// A directory that goes away with everything in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, std::string_view bytes);

// Starts the tool with these streams and returns its process; for tests that
// talk to it while it runs.
int StartTool(const ToolRun& run, int input, int output, int error);
// Its exit status, as in ToolResult.
int WaitForTool(int process);

#endif  // VRKT_TESTS_SUPPORT_PROCESS_H_
