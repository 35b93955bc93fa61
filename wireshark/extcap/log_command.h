#ifndef VRKT_WIRESHARK_EXTCAP_LOG_COMMAND_H_
#define VRKT_WIRESHARK_EXTCAP_LOG_COMMAND_H_

#include <sys/types.h>
#include <unistd.h>

#include <string>
#include <vector>

// The command that writes the log. It runs in a process group of its own, because a shell
// and a pipeline have more than one process to end.

// Where the log comes from: a running command, or standard input.
struct LogSource {
  pid_t process = 0;  // leads the group; 0 if the log comes from standard input
  int log = STDIN_FILENO;
  int errors = -1;          // the command's standard error, -1 after its end
  std::string last_errors;  // the last bytes of it
  int status = 0;           // as waitpid gives it, if the command ended by itself
};

// Starts a program with these arguments. Returns false if there are too many processes or
// descriptors. A missing program ends with status 127, as in a shell.
bool StartCommand(std::vector<std::string> words, LogSource& source);

// Reads what the command wrote to standard error. Waits if there is nothing.
void ReadErrors(LogSource& source);

// Ends the whole group and waits for it. If the log is complete, the command has a second
// to end by itself.
void EndCommand(LogSource& source, bool log_is_complete);

#endif  // VRKT_WIRESHARK_EXTCAP_LOG_COMMAND_H_
