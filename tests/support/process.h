#ifndef VRKT_TESTS_SUPPORT_PROCESS_H_
#define VRKT_TESTS_SUPPORT_PROCESS_H_

#include <functional>
#include <string>
#include <vector>

#include "fapi/hip_version_tags.h"

// Runs the built tool in a process of its own.

struct ToolRun {
  std::vector<std::string> arguments = {"stdin"};
  std::string input{};                  // standard input, from a file
  std::string time_zone = "UTC0";       // TZ
  std::string directory{};              // the working directory; a new one if empty
  std::string name = "decode";          // argument 0
  std::string output_path{};            // file for standard output; if empty, it is captured
  std::function<void()> before_exec{};  // in the child, after its streams are set up
};

struct ToolResult {
  int status = 0;  // exit status, or 128 plus the number of the signal that ended the tool
  std::string out{};
  std::string err{};
  std::string pcap{};  // the contents of udi_fapi.pcap in the working directory
};

ToolResult RunTool(const ToolRun& run);

// Quotes a path or an argument for a shell.
std::string QuoteForShell(const std::string& word);

// Whether a shell finds this program.
bool IsInstalled(const std::string& program);

// A program of this build as a shell command.
std::string ShellCommand(const std::string& program);
// The tool as a shell command.
std::string ToolCommand();

// The first line of every run's standard output.
inline const std::string kBanner =
    std::string("Decode Tool version:") + kHipVersionNames[kHipVersionCount - 1].dotted + ".1\n";

// A directory that is removed with its contents.
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

// Starts the tool with these streams and returns its process id, for tests that
// exchange data with it while it runs.
int StartTool(const ToolRun& run, int input, int output, int error);
// Waits for the tool to end and returns its status, as in ToolResult.
int WaitForTool(int process);

#endif  // VRKT_TESTS_SUPPORT_PROCESS_H_
