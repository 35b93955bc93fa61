// Measures the tool on the workloads, beside the floor, a plain printf decoder
// and, where it is installed, tcpdump on the tool's own capture file. The runs
// alternate, all text goes to /dev/null, and what counts is CPU time: its median
// over the runs, and the median of the ratios of neighbouring runs.
//
// usage: compare DIRECTORY [RUNS], where DIRECTORY holds the built tools

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "workloads.h"

extern char** environ;

namespace {

struct Usage {
  double seconds;
  long peak_kibibytes;
};

Usage Run(std::vector<std::string> command, const char* output = "/dev/null") {
  std::vector<char*> arguments;
  for (std::string& word : command) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, output, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  pid_t process = 0;
  if (posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) {
    std::perror(arguments[0]);
    std::exit(1);
  }
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage usage{};
  wait4(process, &status, 0, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return {seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss};
}

// In a process of its own: a child's peak of memory counts what it shared with
// this process when it was started, so this one stays small.
template <typename Work>
void RunApart(Work work) {
  const pid_t process = fork();
  if (process == 0) {
    work();
    _exit(0);
  }
  int status = 0;
  waitpid(process, &status, 0);
  if (status != 0) std::exit(1);
}

double Median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

// Writes the lengths of a text's lines behind the banner, for the floor.
void WriteLineLengths(const std::string& text_path, const std::string& path) {
  std::ifstream text(text_path, std::ios::binary);
  std::ofstream lengths(path, std::ios::binary);
  std::string line;
  std::getline(text, line);
  while (std::getline(text, line)) {
    const auto length = static_cast<std::uint32_t>(line.size() + 1);
    lengths.write(reinterpret_cast<const char*>(&length), sizeof length);
  }
}

std::string ReadAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 1;
  const std::filesystem::path tools = std::filesystem::absolute(argv[1]);
  const int runs = argc > 2 ? std::atoi(argv[2]) : 11;
  const std::string tool = tools / "vrkt_wlan_udi_log_decode";
  const std::string floor = tools / "bench/floor";
  const std::string plain = tools / "bench/plain_printf";
  const bool has_tcpdump = std::system("command -v tcpdump >/dev/null") == 0;
  std::filesystem::path scratch = std::filesystem::temp_directory_path() / "udi_log_bench";
  std::filesystem::create_directories(scratch);
  std::filesystem::current_path(scratch);

  std::printf("%-11s %9s %8s %8s %8s %8s %9s %9s %7s\n", "workload", "records", "tool", "/floor",
              "plain/", "tcpdump/", "records/s", "text/s", "peak");
  for (const std::string_view name : kWorkloads) {
    const std::size_t records = name == "frames" ? 60000 : 300000;
    const std::string log = std::string(name) + ".udi";
    RunApart([&] { std::ofstream(log, std::ios::binary) << MakeWorkload(name, records); });
    Run({tool, log, "--pcap"}, "text");
    Run({plain, log}, "plain_text");
    RunApart([&] {
      if (ReadAll("text") != ReadAll("plain_text")) {
        std::printf("%s: the plain decoder prints another text\n", log.c_str());
        std::fflush(stdout);
        _exit(1);
      }
      WriteLineLengths("text", "lengths");
    });
    const auto text_size = static_cast<double>(std::filesystem::file_size("text"));

    std::vector<double> tool_times;
    std::vector<double> floor_ratios;
    std::vector<double> plain_ratios;
    std::vector<double> tcpdump_ratios;
    for (int run = 0; run < runs; ++run) {
      tool_times.push_back(Run({tool, log}).seconds);
      floor_ratios.push_back(tool_times.back() / Run({floor, log, "lengths"}).seconds);
      if (run % 4 == 0) plain_ratios.push_back(Run({plain, log}).seconds / tool_times.back());
      if (run % 4 == 0 && has_tcpdump) {
        tcpdump_ratios.push_back(Run({"tcpdump", "-r", "udi_fapi.pcap", "-x"}).seconds /
                                 tool_times.back());
      }
    }
    const long peak = Run({tool, log}).peak_kibibytes;
    const double time = Median(tool_times);
    std::printf("%-11s %9zu %6.0fms %8.2f %8.1f ", std::string(name).c_str(), records, time * 1e3,
                Median(floor_ratios), Median(plain_ratios));
    if (has_tcpdump) {
      std::printf("%8.1f ", Median(tcpdump_ratios));
    } else {
      std::printf("%8s ", "-");
    }
    std::printf("%8.1fM %7.0fMB %4ldKiB\n", static_cast<double>(records) / time / 1e6,
                text_size / time / 1e6, peak);
  }
  std::filesystem::remove_all(scratch);
}
