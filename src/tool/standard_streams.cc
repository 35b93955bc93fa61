#include "tool/standard_streams.h"

#if __has_include(<fcntl.h>) && __has_include(<unistd.h>)

#include <fcntl.h>
#include <unistd.h>

void OccupyClosedStandardStreams() {
  // In ascending order, because a new descriptor is always the lowest free one.
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) != -1) continue;
    // Opened in the opposite direction, so reads and writes fail.
    static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

#else

void OccupyClosedStandardStreams() {}

#endif
