#ifndef VRKT_INTAKE_LINE_STAMP_H_
#define VRKT_INTAKE_LINE_STAMP_H_

#include <cstdint>

// Prints the stamp at the start of an output line, as in "2026/11/21-06:23:00.125 ".
// It is the local time of `timeBase` seconds of Unix time plus `time_word`
// milliseconds, in 32-bit arithmetic whatever the host's time type.
void PrintLineStamp(std::uint32_t timeBase, std::int32_t time_word);

#endif  // VRKT_INTAKE_LINE_STAMP_H_
