#include <getopt.h>

#include <cstdio>
#include <string>

#include "capture.h"
#include "hip/hip_versions.h"
#include "live_frames.h"
#include "tool/standard_streams.h"

// Live capture in Wireshark. Wireshark starts this program with the options of its manual
// page extcap(4): first to list the interfaces and the fields of their dialog, then for
// each capture.

namespace {

constexpr const char* kInterface = "udi";
constexpr const char* kDisplayName = "WLAN driver UDI log";
constexpr const char* kProgram = "udi_extcap";
constexpr const char* kNoFilter = "A UDI log has no capture filter. Use a display filter.";

struct Arguments {
  int task = 0;
  std::string interface_name = kInterface;
  std::string filter;
  CaptureOptions capture;
};

enum Option : int {
  kListInterfaces = 1,
  kListLinkTypes,
  kListFields,
  kCapture,
  kShowUsage,
  kIgnored,
  kText,
};

// Returns false, after a report, if an option is wrong.
bool ReadArguments(int argc, char** argv, Arguments& arguments) {
  std::string* const texts[] = {&arguments.interface_name, &arguments.filter,
                                &arguments.capture.fifo, &arguments.capture.command,
                                &arguments.capture.serial};
  // The values of the last options are texts, in this order.
  constexpr option kOptions[] = {
      {"extcap-interfaces", no_argument, nullptr, kListInterfaces},
      {"extcap-dlts", no_argument, nullptr, kListLinkTypes},
      {"extcap-config", no_argument, nullptr, kListFields},
      {"capture", no_argument, nullptr, kCapture},
      {"help", no_argument, nullptr, kShowUsage},
      {"extcap-version", optional_argument, nullptr, kIgnored},
      {"extcap-interface", required_argument, nullptr, kText},
      {"extcap-capture-filter", required_argument, nullptr, kText + 1},
      {"fifo", required_argument, nullptr, kText + 2},
      {"command", required_argument, nullptr, kText + 3},
      {"serial", required_argument, nullptr, kText + 4},
      {},
  };
  for (;;) {
    const int option = getopt_long(argc, argv, "", kOptions, nullptr);
    if (option == -1) return true;
    if (option == '?') return false;
    if (option >= kText) {
      *texts[option - kText] = optarg;
    } else if (option != kIgnored) {
      arguments.task = option;
    }
  }
}

void ListInterfaces() {
  std::printf("extcap {version=%s.1}{display=%s}\n", HipVersionTable.back().name, kDisplayName);
  std::printf("interface {value=%s}{display=%s}\n", kInterface, kDisplayName);
}

void ListFields() {
  std::printf(
      "arg {number=0}{call=--command}{display=Command}{type=string}{default=%s}"
      "{tooltip=The command that writes the log to its standard output}\n"
      "arg {number=1}{call=--serial}{display=Phone}{type=string}{placeholder=this PC}"
      "{tooltip=The serial number of the phone that runs the command, from adb devices. "
      "Empty: this PC runs it}\n",
      kDefaultCommand);
}

int ShowUsage(std::FILE* stream) {
  std::fprintf(stream,
               "Usage: %s --capture --fifo FIFO [--command COMMAND] [--serial SERIAL]\n"
               "Writes the packets of a live log for Wireshark.\n"
               "  --fifo FIFO        where to; \"-\" is standard output\n"
               "  --command COMMAND  writes the log, by default \"%s\";\n"
               "                     \"-\" reads the log from standard input\n"
               "  --serial SERIAL    the phone that runs the command, by adb\n"
               "The other options are those of extcap(4).\n",
               kProgram, kDefaultCommand);
  return stream == stdout ? 0 : 1;
}

int Fail(const std::string& text) {
  std::fprintf(stderr, "%s: %s\n", kProgram, text.c_str());
  return 1;
}

int Capture(const Arguments& arguments) {
  if (arguments.capture.fifo.empty()) return Fail("--capture needs --fifo.");
  if (!arguments.filter.empty()) return Fail(kNoFilter);
  std::string failure = RunCapture(arguments.capture);
  if (failure.empty()) return 0;
  for (char& c : failure) c = c == '\n' ? ' ' : c;
  return Fail(failure);
}

}  // namespace

int main(int argc, char** argv) {
  OccupyClosedStandardStreams();
  Arguments arguments;
  if (!ReadArguments(argc, argv, arguments)) return 1;
  if (arguments.interface_name != kInterface) {
    return Fail("There is no interface '" + arguments.interface_name + "'.");
  }
  switch (arguments.task) {
    case kListInterfaces:
      ListInterfaces();
      return 0;
    case kListLinkTypes:
      std::printf("dlt {number=%u}{name=USER1}{display=%s}\n", kUser1LinkType, kDisplayName);
      return 0;
    case kListFields:
      ListFields();
      return 0;
    case kCapture:
      return Capture(arguments);
    case kShowUsage:
      return ShowUsage(stdout);
    default:
      break;
  }
  // A filter alone is to be checked. What is printed is what is wrong with it.
  if (arguments.filter.empty()) return ShowUsage(stderr);
  std::printf("%s\n", kNoFilter);
  return 0;
}
