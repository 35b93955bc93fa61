#include "intake/run_control.h"
#include "intake/standard_streams.h"

int main(int argc, char** argv) {
  OccupyClosedStandardStreams();
  return RunLogDecoder(argc, argv);
}
