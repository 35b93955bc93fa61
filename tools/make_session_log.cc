// Writes examples/session.udi to standard output.

#include <cstdio>

#include "session_log.h"

int main() {
  const std::string log = SessionLog().bytes();
  return std::fwrite(log.data(), 1, log.size(), stdout) == log.size() ? 0 : 1;
}
