#include "tool/run_control.h"

int main(int argc, char** argv) { return RunLogDecoder(argc, argv); }
