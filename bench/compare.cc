// Measures the tool on each workload, and relative to tcpdump on the tool's capture file, if it
// is installed.
//
// TZ is set, except for a last row with the workload "seconds". Without TZ, the C
// library looks at the system's zone file for each new second, which costs more than
// all else.
//
// The runs alternate, and all text goes to /dev/null. Shown are the median of the CPU
// time, the medians of the ratios of neighbouring runs, and the peak of memory.
//
// Two further tables have queries on the workloads session and mixed, in SQLite's shell,
// relative to the tool. They are left out without SQLite.
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

namespace {

// Runs a command and returns its CPU time in seconds.
double Run(std::vector<std::string> command, const char* output = "/dev/null") {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
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

bool HasProgram(const std::string& name) {
  return std::system(("command -v " + name + " >/dev/null").c_str()) == 0;
}

double Median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

std::string ReadAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A row of the table that is printed.
struct Row {
  std::string name;
  std::string_view workload;
  std::size_t records;
};

std::vector<Row> ListRows() {
  std::vector<Row> rows;
  for (const std::string_view workload : kWorkloads) {
    rows.push_back({std::string(workload), workload, workload == "frames" ? 60000U : 300000U});
  }
  rows.push_back({"no TZ", "seconds", 300000});
  return rows;
}

// The measured programs, and the files that they read and write in the working directory.
struct Bench {
  std::filesystem::path programs;
  int runs;
  bool has_tcpdump;

  std::string tool() const { return programs / "vrkt_wlan_udi_log_decode"; }
  std::string extension() const { return programs / "sqlite/mod_udi.so"; }
};

struct Figures {
  double seconds;          // CPU time of the tool
  double tcpdump_to_tool;  // 0 without tcpdump
  int peak_kib;
  std::uintmax_t text_size;
};

// Writes the log, and the tool's text and capture file.
void PrepareFiles(const Bench& bench, const Row& row) {
  std::ofstream("log", std::ios::binary) << MakeWorkload(row.workload, row.records);
  Run({bench.tool(), "log", "--pcap"}, "text");
}

// Returns the peak of a command's memory in KiB.
int MeasurePeak(const Bench& bench, std::vector<std::string> command) {
  command.insert(command.begin(), bench.programs / "bench/peak_memory");
  Run(command, "peak");
  return std::stoi(ReadAll("peak"));
}

Figures Measure(const Bench& bench) {
  std::vector<double> tool_times;
  std::vector<double> tcpdump_ratios;
  for (int run = 0; run < bench.runs; ++run) {
    const double time = Run({bench.tool(), "log"});
    tool_times.push_back(time);
    if (run % 4 != 0 || !bench.has_tcpdump) continue;
    tcpdump_ratios.push_back(Run({"tcpdump", "-r", "udi_fapi.pcap", "-x"}) / time);
  }
  return {Median(tool_times), bench.has_tcpdump ? Median(tcpdump_ratios) : 0,
          MeasurePeak(bench, {bench.tool(), "log"}), std::filesystem::file_size("text")};
}

void PrintHead() {
  std::printf("%-11s %8s %6s %9s %9s %9s %12s\n", "workload", "records", "tool", "records/s",
              "text/s", "peak", "tcpdump/tool");
}

void PrintRow(const Row& row, const Figures& figures) {
  std::printf("%-11s %8zu %4.0fms %8.1fM %7.0fMB %6dKiB ", row.name.c_str(), row.records,
              figures.seconds * 1e3, static_cast<double>(row.records) / figures.seconds / 1e6,
              static_cast<double>(figures.text_size) / figures.seconds / 1e6, figures.peak_kib);
  if (figures.tcpdump_to_tool > 0) {
    std::printf("%12.1f\n", figures.tcpdump_to_tool);
  } else {
    std::printf("%12s\n", "-");
  }
  std::fflush(stdout);
}

// `limit` is what the ratio to the tool may be. A plan that SQLite no longer takes exceeds it.
struct Query {
  const char* name;
  double limit;
  const char* sql;
};
constexpr Query kQueries[] = {
    {"filter", 0.6, "SELECT count(*) FROM udi('log') WHERE result_code <> 'success'"},
    {"group", 1.5, "SELECT signal, count(*) FROM udi('log') GROUP BY signal"},
    {"lines", 2.5, "SELECT line FROM udi('log')"},
    {"json", 4, "SELECT json FROM udi('log')"},
    {"answers", 2.5, "SELECT max(response_ms) FROM udi('log')"},
    {"look-ups", 15,
     "SELECT count(*) FROM udi('log') a JOIN udi('log') r ON r.record = a.request WHERE a.vif > 0"},
};

void MeasureQueries(const Bench& bench, std::string_view workload) {
  std::ofstream("log", std::ios::binary) << MakeWorkload(workload, 300000);
  std::printf("\n%-11s %8s %8s %9s  on %s\n", "query", "sql/tool", "limit", "peak",
              std::string(workload).c_str());
  for (const Query& query : kQueries) {
    const std::vector<std::string> command = {"sqlite3", ":memory:", ".load " + bench.extension(),
                                              query.sql};
    std::vector<double> ratios;
    for (int run = 0; run < bench.runs; ++run) {
      const double time = Run({bench.tool(), "log"});
      ratios.push_back(Run(command) / time);
    }
    const double ratio = Median(ratios);
    std::printf("%-11s %8.2f %8.2f %6dKiB%s\n", query.name, ratio, query.limit,
                MeasurePeak(bench, command), ratio > query.limit ? "  too slow" : "");
    std::fflush(stdout);
  }
}

// Makes a directory of its own the working directory.
std::string EnterScratchDirectory() {
  std::string scratch = std::filesystem::temp_directory_path() / "udi_log_bench_XXXXXX";
  if (mkdtemp(scratch.data()) == nullptr) std::exit(1);
  std::filesystem::current_path(scratch);
  return scratch;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 1;
  const Bench bench = {std::filesystem::absolute(argv[1]), argc > 2 ? std::stoi(argv[2]) : 11,
                       HasProgram("tcpdump")};
  const std::string scratch = EnterScratchDirectory();
  PrintHead();
  setenv("TZ", "UTC0", 1);
  for (const Row& row : ListRows()) {
    if (row.name == "no TZ") unsetenv("TZ");
    PrepareFiles(bench, row);
    PrintRow(row, Measure(bench));
  }
  if (std::filesystem::exists(bench.extension()) && HasProgram("sqlite3")) {
    setenv("TZ", "UTC0", 1);
    for (const std::string_view workload : {"session", "mixed"}) MeasureQueries(bench, workload);
  }
  std::filesystem::current_path("/");
  std::filesystem::remove_all(scratch);
}
