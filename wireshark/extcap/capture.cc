#include "capture.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "live_frames.h"
#include "log/log_reader.h"
#include "log/log_text.h"
#include "log_command.h"

// One thread waits for everything in one place, WaitFor: for the log, for room in the
// fifo, and for what stops the capture. The function that reads the log for LogReader waits
// there. Signals are descriptors, because a handler may run just before
// the process waits, and ppoll delivers no signal while the log has data.

namespace {

struct Capture {
  LogSource source;
  int fifo = -1;
  int signals = -1;
  pid_t parent = 0;         // 0 if its end does not stop the capture
  bool stopped = false;     // by the user, or by the end of the reader of the fifo
  std::string failure;      // why the fifo cannot be written
  std::string frames;       // not yet written
  std::string first_bytes;  // of the log
};

struct CapturedLog {
  LogEnd end;
  bool has_header;  // a header that was not rejected
  bool is_whole;    // read to its last byte
};

constexpr std::size_t kMaxFirstBytes = 200;
constexpr std::size_t kMaxFrames = 65536;
constexpr int kParentCheckMs = 500;

int OpenSignals() {
  // Wireshark may have started this program with other settings.
  std::signal(SIGCHLD, SIG_DFL);
  std::signal(SIGPIPE, SIG_IGN);
  sigset_t stopping;
  sigemptyset(&stopping);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&stopping, signal);
  sigprocmask(SIG_SETMASK, &stopping, nullptr);
  return signalfd(-1, &stopping, SFD_CLOEXEC);
}

// Waits until a descriptor is ready. Returns false if the capture is to stop.
bool WaitFor(Capture& capture, int descriptor, std::int16_t events) {
  while (!capture.stopped) {
    pollfd polled[] = {{descriptor, events, 0},
                       {capture.fifo, 0, 0},  // for its errors
                       {capture.signals, POLLIN, 0},
                       {capture.source.errors, POLLIN, 0}};
    // If Wireshark is killed, its capture process reads the fifo until the next frame.
    const int timeout = capture.parent != 0 ? kParentCheckMs : -1;
    if (poll(polled, std::size(polled), timeout) < 0 && errno != EINTR) capture.stopped = true;
    if (polled[1].revents != 0 || polled[2].revents != 0) capture.stopped = true;
    if (capture.parent != 0 && getppid() != capture.parent) capture.stopped = true;
    if (polled[3].revents != 0) ReadErrors(capture.source);
    if (polled[0].revents != 0) break;
  }
  return !capture.stopped;
}

// A fifo without a reader cannot be opened for writing yet, and a blocking open would not
// notice that Wireshark ended.
bool OpenFifo(Capture& capture, const std::string& path) {
  constexpr int kRetryMs = 20;
  if (path == "-") {
    capture.fifo = STDOUT_FILENO;
    return true;
  }
  capture.parent = getppid();
  while (!capture.stopped) {
    capture.fifo = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (capture.fifo >= 0) return true;
    if (errno != ENXIO) {
      capture.failure = "Cannot open " + path + ": " + std::strerror(errno);
      return false;
    }
    pollfd signals = {capture.signals, POLLIN, 0};
    capture.stopped = poll(&signals, 1, kRetryMs) != 0 || getppid() != capture.parent;
  }
  return false;
}

// Standard output may be a pipe that blocks. A pipe that is ready has room for PIPE_BUF.
void WriteFrames(Capture& capture) {
  std::size_t written = 0;
  while (written < capture.frames.size() && WaitFor(capture, capture.fifo, POLLOUT)) {
    const ssize_t count = write(capture.fifo, capture.frames.data() + written,
                                std::min<std::size_t>(capture.frames.size() - written, PIPE_BUF));
    if (count >= 0) {
      written += static_cast<std::size_t>(count);
    } else if (errno != EINTR && errno != EAGAIN) {
      capture.stopped = true;
      if (errno != EPIPE) capture.failure = std::string("Cannot write: ") + std::strerror(errno);
    }
  }
  capture.frames.clear();
}

// Reads bytes of the log. It is called when all bytes so far are used.
ssize_t ReadLog(Capture& capture, void* bytes, std::size_t size) {
  WriteFrames(capture);
  ssize_t count = 0;
  do {
    if (!WaitFor(capture, capture.source.log, POLLIN)) return 0;
    count = read(capture.source.log, bytes, size);
  } while (count < 0 && (errno == EINTR || errno == EAGAIN));
  if (count > 0 && capture.first_bytes.size() < kMaxFirstBytes) {
    capture.first_bytes.append(static_cast<const char*>(bytes), static_cast<std::size_t>(count));
  }
  return count;
}

CapturedLog CaptureLog(Capture& capture) {
  AppendFileHeader(capture.frames);
  LogReader log(
      [&capture](void* bytes, std::size_t size) { return ReadLog(capture, bytes, size); });
  LogItem item;
  bool has_header = false;
  while (log.Read(item)) {
    has_header = true;
    AppendFrame(item, log.version(), capture.frames);
    if (capture.frames.size() > kMaxFrames) WriteFrames(capture);
  }
  WriteFrames(capture);
  const LogEnd end = log.end();
  const bool at_end = end.kind == LogEnd::Kind::kComplete || end.kind == LogEnd::Kind::kCut;
  return {end, has_header, at_end && !capture.stopped};
}

// The first line of what came in place of a log, if it is text.
std::string FindText(const std::string& bytes) {
  std::string line = bytes.substr(0, std::min(bytes.find_first_of("\r\n"), kMaxFirstBytes));
  const auto is_text = [](char c) { return c >= ' ' && c <= '~'; };
  return std::all_of(line.begin(), line.end(), is_text) ? line : "";
}

std::string GetLastLine(std::string text) {
  text.erase(text.find_last_not_of(" \r\n") + 1);
  return text.substr(text.find_last_of("\r\n") + 1);
}

std::string DescribeFailedCommand(const LogSource& source) {
  constexpr int kNotFound = 127;
  const int status = WEXITSTATUS(source.status);
  std::string text = " ended with status " + std::to_string(status);
  if (WIFSIGNALED(source.status)) {
    text = " was ended by signal " + std::to_string(WTERMSIG(source.status));
  } else if (status == kNotFound) {
    text = " was not found";
  }
  const std::string error = GetLastLine(source.last_errors);
  return error.empty() ? text + "." : text + ": " + error;
}

std::string DescribeNoLog(const Capture& capture, const LogEnd& end) {
  if (end.kind == LogEnd::Kind::kWordUnreadable) return " cannot be read.";
  if (capture.first_bytes.empty()) return " is empty.";
  const std::string text = FindText(capture.first_bytes);
  if (!text.empty()) return " is no log: " + text;
  if (end.kind == LogEnd::Kind::kCut) return " ends within the header of the log.";
  return " is no log that can be read: " + DescribeLogEnd(end);
}

// Returns what the user has to know. `name` is that of the command.
std::string DescribeEnd(const Capture& capture, const CapturedLog& log, const std::string& name) {
  const LogSource& source = capture.source;
  if (capture.stopped) return capture.failure;
  if (log.is_whole && source.process != 0 && source.status != 0) {
    return "The command '" + name + "'" + DescribeFailedCommand(source);
  }
  if (!log.has_header) {
    const std::string output = "The output of '" + name + "'";
    return (source.process == 0 ? "Standard input" : output) + DescribeNoLog(capture, log.end);
  }
  if (log.end.kind == LogEnd::Kind::kComplete) return "";
  if (log.end.kind == LogEnd::Kind::kCut) return "The log is cut.";
  return "The log is damaged: " + DescribeLogEnd(log.end);
}

}  // namespace

std::string RunCapture(const CaptureOptions& options) {
  Capture capture;
  capture.signals = OpenSignals();
  if (!OpenFifo(capture, options.fifo)) return capture.failure;

  // On a phone, the shell there reads the command, so it is one argument in both cases.
  std::vector<std::string> words = {"/bin/sh", "-c", options.command};
  std::string name = options.command;
  if (!options.serial.empty()) {
    words = {"adb", "-s", options.serial, "exec-out", options.command};
    name = "adb -s " + options.serial + " exec-out " + options.command;
  }
  if (options.command != "-" && !StartCommand(words, capture.source)) {
    return "Cannot start '" + name + "': " + std::strerror(errno);
  }
  const CapturedLog log = CaptureLog(capture);
  if (capture.source.process != 0) EndCommand(capture.source, log.is_whole);
  return DescribeEnd(capture, log, name);
}
