#include "log_command.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace {

constexpr std::size_t kMaxErrors = 500;
constexpr int kPatienceMs = 1000;

// Runs in the new process.
[[noreturn]] void BecomeCommand(std::vector<char*>& arguments, int log, int errors) {
  setpgid(0, 0);
  // The command also ends if this program is killed.
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  dup2(nothing, STDIN_FILENO);
  dup2(log, STDOUT_FILENO);
  dup2(errors, STDERR_FILENO);
  std::signal(SIGPIPE, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  execvp(arguments[0], arguments.data());
  dprintf(STDERR_FILENO, "%s: %s\n", arguments[0], std::strerror(errno));
  _exit(127);
}

// Returns whether all processes of the group ended within this time.
bool WaitForGroup(LogSource& source, int milliseconds) {
  constexpr int kStepMs = 5;
  for (;; milliseconds -= kStepMs) {
    int status = 0;
    pid_t ended = 0;
    while ((ended = waitpid(-source.process, &status, WNOHANG)) > 0) {
      if (ended == source.process) source.status = status;
    }
    if (ended < 0) return true;
    if (milliseconds <= 0) return false;
    poll(nullptr, 0, kStepMs);
  }
}

}  // namespace

bool StartCommand(std::vector<std::string> words, LogSource& source) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);

  std::array<int, 2> log{};
  std::array<int, 2> errors{};
  if (pipe2(log.data(), O_CLOEXEC) != 0 || pipe2(errors.data(), O_CLOEXEC) != 0) return false;
  // Processes whose parent ended become children of this one, so that all can be awaited.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const pid_t process = fork();
  if (process < 0) return false;
  if (process == 0) BecomeCommand(arguments, log[1], errors[1]);
  setpgid(process, process);  // here too: the new process may not have run yet
  close(log[1]);
  close(errors[1]);
  source.process = process;
  source.log = log[0];
  source.errors = errors[0];
  return true;
}

void ReadErrors(LogSource& source) {
  std::array<char, 1024> bytes{};
  const ssize_t count = read(source.errors, bytes.data(), bytes.size());
  if (count <= 0) {
    close(source.errors);
    source.errors = -1;
    return;
  }
  source.last_errors.append(bytes.data(), static_cast<std::size_t>(count));
  if (source.last_errors.size() > kMaxErrors) {
    source.last_errors.erase(0, source.last_errors.size() - kMaxErrors);
  }
}

void EndCommand(LogSource& source, bool log_is_complete) {
  if (!log_is_complete || !WaitForGroup(source, kPatienceMs)) {
    const int status = source.status;
    kill(-source.process, SIGTERM);
    if (!WaitForGroup(source, kPatienceMs)) {
      kill(-source.process, SIGKILL);
      WaitForGroup(source, kPatienceMs);
    }
    source.status = status;
  }
  // What is left in the pipe. A process outside the group may still write there.
  constexpr int kMaxReads = 64;
  for (int reads = 0; reads < kMaxReads && source.errors >= 0; ++reads) {
    pollfd errors = {source.errors, POLLIN, 0};
    if (poll(&errors, 1, 0) <= 0) break;
    ReadErrors(source);
  }
}
