#ifndef VRKT_TOOLS_WORKLOADS_H_
#define VRKT_TOOLS_WORKLOADS_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

// Logs in version 14.5.12, the same at each run. The first is like that of a phone in use,
// see session_workload.h. The others are random signals:
//
//   mixed       60 % data path with 0 to 128 bytes of bulk, 30 % management,
//               10 % any signal
//   data        data path with 0 to 128 bytes of bulk
//   management  management
//   frames      data path with 1,500 bytes of bulk
//   seconds     as mixed, but one record per second
//
// The header of the log, and further ones in a session, are no records.
inline constexpr std::string_view kWorkloads[] = {"session",    "mixed",  "data",
                                                  "management", "frames", "seconds"};

std::string MakeWorkload(std::string_view name, std::size_t records);

// Writes the same log in pieces, so that it can be larger than the memory. Returns whether
// all of it was written.
bool WriteWorkload(std::string_view name, std::uint32_t records, std::FILE* file);

#endif  // VRKT_TOOLS_WORKLOADS_H_
