// Takes a part of a log, as a log of its own, on request without secrets.

#include <fcntl.h>
#include <getopt.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "cut_log.h"
#include "hip/hip_versions.h"
#include "log/line_stamp.h"
#include "log/log_reader.h"
#include "log/log_text.h"
#include "selection.h"
#include "tool/standard_streams.h"

namespace {

constexpr const char* kProgram = "vrkt_wlan_udi_log_cut";
constexpr const char* kStandardStream = "-";

// Exit statuses.
constexpr int kWritten = 0;
constexpr int kFailed = 1;
constexpr int kDamaged = 2;

enum Option : int { kFrom = 1, kTo, kRecords, kRedact, kKeepAddresses, kHelp, kVersion };

struct Arguments {
  int task = 0;  // kHelp or kVersion
  Selection selection{};
  std::string records{};
  bool redact = false;
  bool keep_addresses = false;
  std::string log = kStandardStream;
};

int Fail(const std::string& text) {
  std::fprintf(stderr, "%s: %s\n", kProgram, text.c_str());
  return kFailed;
}

int Fail(const std::string& what, int error) { return Fail(what + ": " + std::strerror(error)); }

int ShowUsage() {
  std::printf(
      "Usage: %s [OPTION...] [LOG] >PART\n"
      "Takes a part of a UDI log, as a log of its own. Without LOG, or with \"-\": of standard\n"
      "input.\n"
      "  --from PLACE      where the part begins\n"
      "  --to PLACE        where it ends; a stamp includes all that begin with it\n"
      "  --records FILE    only the records with these numbers, one per line, ascending;\n"
      "                    \"-\" is standard input\n"
      "  --redact          with zeros in place of keys, names and contents, and with\n"
      "                    pseudonyms in place of MAC addresses\n"
      "  --keep-addresses  with --redact: keep the addresses\n"
      "  --help, --version\n"
      "PLACE is the number of a record, a stamp or its beginning (2026/06/01-07:00), or a\n"
      "time of day (07:00:42), which is that time on each day.\n",
      kProgram);
  return 0;
}

// Returns the exit status if an argument is wrong.
std::optional<int> ReadArguments(int argc, char** argv, Arguments& arguments) {
  constexpr option kOptions[] = {
      {"from", required_argument, nullptr, kFrom},
      {"to", required_argument, nullptr, kTo},
      {"records", required_argument, nullptr, kRecords},
      {"redact", no_argument, nullptr, kRedact},
      {"keep-addresses", no_argument, nullptr, kKeepAddresses},
      {"help", no_argument, nullptr, kHelp},
      {"version", no_argument, nullptr, kVersion},
      {},
  };
  for (;;) {
    const int chosen = getopt_long(argc, argv, "", kOptions, nullptr);
    switch (chosen) {
      case kFrom:
      case kTo: {
        std::optional<Place>& place =
            chosen == kFrom ? arguments.selection.from : arguments.selection.to;
        place = ParsePlace(optarg);
        if (!place) return Fail(std::string("not a record number, stamp or time: ") + optarg);
        break;
      }
      case kRecords:
        arguments.records = optarg;
        break;
      case kRedact:
        arguments.redact = true;
        break;
      case kKeepAddresses:
        arguments.keep_addresses = true;
        break;
      case kHelp:
      case kVersion:
        arguments.task = chosen;
        return std::nullopt;
      case -1:
        if (argc - optind > 1) return Fail("more than one log; try --help");
        if (optind < argc) arguments.log = argv[optind];
        if (arguments.keep_addresses && !arguments.redact) {
          return Fail("--keep-addresses needs --redact");
        }
        if (arguments.records == kStandardStream && arguments.log == kStandardStream) {
          return Fail("standard input cannot be both the log and its record numbers");
        }
        return std::nullopt;
      default:
        return kFailed;  // getopt_long has reported why
    }
  }
}

// Returns 0 or an error number.
int WriteToStandardOutput(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) return errno;
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

// The records of a log, as in "76 records, from ... to ...".
std::string DescribeRecords(const CutResult& result) {
  std::string text = std::to_string(result.count) + " records";
  if (result.count == 0) return text;
  LineStamp stamp;
  const auto format = [&stamp](const RecordTime& time) {
    const std::string_view text_and_blank = stamp.Format(time);
    return std::string(text_and_blank.substr(0, text_and_blank.size() - 1));
  };
  return text + ", from " + format(result.first) + " to " + format(result.last);
}

// Returns the exit status. `name` is that of the log.
int Report(const CutResult& result, const Arguments& arguments, const std::string& name) {
  if (result.write_error != 0) return Fail("cannot write the part", result.write_error);
  const auto& records = arguments.selection.records;
  if (records && records->is_wrong()) {
    return Fail(arguments.records + ": not a list of record numbers in ascending order");
  }
  if (!result.end) return kWritten;
  const bool is_complete = result.end->kind == LogEnd::Kind::kComplete;
  if (result.is_empty && (is_complete || result.count > 0)) {
    Fail(name + ": nothing selected of " + DescribeRecords(result));
  }
  if (is_complete) return result.is_empty ? kFailed : kWritten;
  Fail(name + ": " +
       (result.end->kind == LogEnd::Kind::kCut ? "cut" : DescribeLogEnd(*result.end)));
  return kDamaged;
}

bool IsSameFile(int input, int output) {
  struct stat in {};
  struct stat out {};
  return fstat(input, &in) == 0 && fstat(output, &out) == 0 && S_ISREG(out.st_mode) &&
         in.st_dev == out.st_dev && in.st_ino == out.st_ino;
}

int Cut(Arguments& arguments) {
  if (isatty(STDOUT_FILENO) == 1) return Fail("the part is binary: redirect standard output");
  int input = STDIN_FILENO;
  std::string name = "standard input";
  if (arguments.log != kStandardStream) {
    name = arguments.log;
    input = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (input < 0) return Fail(name, errno);
  }
  if (IsSameFile(input, STDOUT_FILENO)) return Fail(name + ": is also the output");
  std::FILE* records = nullptr;
  if (arguments.records == kStandardStream) {
    records = stdin;
  } else if (!arguments.records.empty()) {
    records = std::fopen(arguments.records.c_str(), "re");
    if (records == nullptr) return Fail(arguments.records, errno);
  }
  if (records != nullptr) arguments.selection.records.emplace(records);
  // A closed pipe is reported like a full disk. The process ends here, so its files are closed.
  std::signal(SIGPIPE, SIG_IGN);
  std::optional<Redactor> redactor;
  if (arguments.redact) redactor.emplace(arguments.keep_addresses);
  const CutResult result =
      CutLog([input](void* bytes, std::size_t size) { return read(input, bytes, size); },
             WriteToStandardOutput, arguments.selection, std::move(redactor));
  return Report(result, arguments, name);
}

}  // namespace

int main(int argc, char** argv) {
  OccupyClosedStandardStreams();
  Arguments arguments;
  if (const std::optional<int> status = ReadArguments(argc, argv, arguments)) return *status;
  switch (arguments.task) {
    case kHelp:
      return ShowUsage();
    case kVersion:
      std::printf("%s %s.1\n", kProgram, HipVersionTable.back().name);
      return 0;
    default:
      return Cut(arguments);
  }
}
