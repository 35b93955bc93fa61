#ifndef VRKT_TOOLS_SESSION_WORKLOAD_H_
#define VRKT_TOOLS_SESSION_WORKLOAD_H_

#include <functional>
#include <string>

// Makes a log like that of a phone in use, in version 14.5.12, the same at each run. Each
// call returns the bytes of the next record, after a header if one opens with it. The log
// has no end: an hour has about 450,000 records of 130 bytes.
std::function<std::string()> MakeSession();

#endif  // VRKT_TOOLS_SESSION_WORKLOAD_H_
