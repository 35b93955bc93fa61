// Runs a command with its output discarded, and prints the peak of its memory in
// KiB. This is a process of its own because it has to be small: the kernel counts
// what a process had before it ran the command.
//
// usage: peak_memory COMMAND [ARGUMENT...]

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <initializer_list>

int main(int argc, char** argv) {
  if (argc < 2) return 1;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int output : {STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&actions, output, "/dev/null", O_WRONLY, 0);
  }
  pid_t process = 0;
  if (posix_spawnp(&process, argv[1], &actions, nullptr, argv + 1, environ) != 0) return 1;
  int status = 0;
  rusage usage{};
  if (wait4(process, &status, 0, &usage) < 0 || status != 0) return 1;
  std::printf("%ld\n", usage.ru_maxrss);
}
