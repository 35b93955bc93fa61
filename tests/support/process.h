#ifndef VRKT_TESTS_SUPPORT_PROCESS_H_
#define VRKT_TESTS_SUPPORT_PROCESS_H_

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "fapi/hip_version_tags.h"

// Runs the built tool in a process of its own, with stamps in UTC.

struct ToolRun {
  std::vector<std::string> arguments = {"stdin"};
  std::string input{};                  // standard input, from a file
  std::string directory{};              // the working directory; a new one if empty
  std::string name = "decode";          // argument 0
  std::function<void()> before_exec{};  // in the child, after its streams are set up
};

struct ToolResult {
  int status = 0;  // exit status, or 128 plus the number of the signal that ended the tool
  std::string out{};
  std::string err{};
  std::string pcap{};  // the contents of udi_fapi.pcap in the working directory
  bool operator==(const ToolResult&) const = default;
};

inline void PrintTo(const ToolResult& result, std::ostream* out) {
  *out << "status " << result.status << "\n"
       << result.out << result.err << testing::PrintToString(result.pcap);
}

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

// The report of a log of the last version, in runs with the usual name.
inline const std::string kDetected = "decode: Log File Hip Version 14.5.12 detected\n";

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

// Starts the tool and returns its process id, for tests that exchange data with it while
// it runs. It has the streams of this process, and needs a working directory.
int StartTool(const ToolRun& run);
// Waits for the tool to end and returns its status, as in ToolResult.
int WaitForTool(int process);

// Reads until `text` has arrived, or until nothing arrives for ten seconds.
std::string ReadUntil(int descriptor, const std::string& text);

#endif  // VRKT_TESTS_SUPPORT_PROCESS_H_
