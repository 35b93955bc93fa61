#ifndef VRKT_TOOLS_WORKLOADS_H_
#define VRKT_TOOLS_WORKLOADS_H_

#include <cstddef>
#include <string>
#include <string_view>

// Logs of random signals in version 14.5.12, the same at each run:
//
//   mixed       60 % data path with 0 to 128 bytes of bulk, 30 % management,
//               10 % any signal
//   data        data path with 0 to 128 bytes of bulk
//   management  management
//   frames      data path with 1,500 bytes of bulk
//   seconds     as mixed, but one record per second
inline constexpr std::string_view kWorkloads[] = {"mixed", "data", "management", "frames",
                                                  "seconds"};

std::string MakeWorkload(std::string_view name, std::size_t records);

#endif  // VRKT_TOOLS_WORKLOADS_H_
