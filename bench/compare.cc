// Measures the tool on each workload, relative to these programs:
//
//   lines    bench/floor with one write per line: the bare cost of the bytes
//   pieces   bench/floor with the tool's own writes and its calls of localtime: the
//            least cost of printing piece by piece
//   plain    bench/plain_printf, a decoder with a printf per field
//   tcpdump  on the tool's capture file, if it is installed
//
// TZ is set, except for a last row with the workload "seconds". Without TZ, the C
// library looks at the system's zone file for each new second, which costs more than
// all else.
//
// The runs alternate, and all text goes to /dev/null. Shown are the median of the CPU
// time, the medians of the ratios of neighbouring runs, and the peak of memory.
//
// usage: compare DIRECTORY [RUNS], where DIRECTORY is the build directory

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

// Runs a command and returns its CPU time in seconds.
double Run(std::vector<std::string> command, const char* output = "/dev/null") {
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
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
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

std::string ReadAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void RequireEqual(bool equal, std::string_view workload, const char* what) {
  if (equal) return;
  std::fprintf(stderr, "%s: %s\n", std::string(workload).c_str(), what);
  std::exit(1);
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
  std::string scratch = std::filesystem::temp_directory_path() / "udi_log_bench_XXXXXX";
  if (mkdtemp(scratch.data()) == nullptr) return 1;
  std::filesystem::current_path(scratch);

  std::printf("%-11s %8s %6s %8s %8s %7s %9s %10s %9s %9s\n", "workload", "records", "tool",
              "tool/", "tool/", "plain/", "tcpdump/", "records/s", "text/s", "peak");
  std::printf("%-11s %8s %6s %8s %8s %7s %9s %10s %9s %9s\n", "", "", "", "lines", "pieces", "tool",
              "tool", "", "", "");
  setenv("TZ", "UTC0", 1);
  std::vector<std::string_view> rows(std::begin(kWorkloads), std::end(kWorkloads));
  rows.push_back("no TZ");
  for (const std::string_view row : rows) {
    if (row == "no TZ") unsetenv("TZ");
    const std::string_view name = row == "no TZ" ? "seconds" : row;
    const std::size_t records = name == "frames" ? 60000 : 300000;
    const std::string log = std::string(name) + ".udi";
    std::ofstream(log, std::ios::binary) << MakeWorkload(name, records);
    Run({tool, log, "--pcap"}, "text");
    Run({plain, log}, "plain_text");
    RequireEqual(ReadAll("text") == ReadAll("plain_text"), name,
                 "the plain decoder prints a different text");
    Run({tools / "bench/record_pieces", log});
    const std::uintmax_t text_size = std::filesystem::file_size("text");
    const std::uintmax_t banner_size = ReadAll("text").find('\n') + 1;
    for (const char* lengths : {"lines", "pieces"}) {
      Run({floor, lengths, log}, "floor_text");
      RequireEqual(std::filesystem::file_size("floor_text") == text_size - banner_size, name,
                   "the floor does not write as many bytes as the tool");
    }

    std::vector<double> tool_times;
    std::vector<double> line_ratios;
    std::vector<double> piece_ratios;
    std::vector<double> plain_ratios;
    std::vector<double> tcpdump_ratios;
    for (int run = 0; run < runs; ++run) {
      const double time = Run({tool, log});
      tool_times.push_back(time);
      line_ratios.push_back(time / Run({floor, "lines", log}));
      piece_ratios.push_back(time / Run({floor, "pieces", log}));
      if (run % 4 == 0) plain_ratios.push_back(Run({plain, log}) / time);
      if (run % 4 == 0 && has_tcpdump) {
        tcpdump_ratios.push_back(Run({"tcpdump", "-r", "udi_fapi.pcap", "-x"}) / time);
      }
    }
    Run({tools / "bench/peak_memory", tool, log}, "peak");
    const double time = Median(tool_times);
    std::printf("%-11s %8zu %4.0fms %8.2f %8.2f %7.1f ", std::string(row).c_str(), records,
                time * 1e3, Median(line_ratios), Median(piece_ratios), Median(plain_ratios));
    if (has_tcpdump) {
      std::printf("%9.1f ", Median(tcpdump_ratios));
    } else {
      std::printf("%9s ", "-");
    }
    std::printf("%9.1fM %7.0fMB %6dKiB\n", static_cast<double>(records) / time / 1e6,
                static_cast<double>(text_size) / time / 1e6, std::atoi(ReadAll("peak").c_str()));
    std::fflush(stdout);
  }
  std::filesystem::current_path("/");
  std::filesystem::remove_all(scratch);
}
