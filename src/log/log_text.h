#ifndef VRKT_LOG_LOG_TEXT_H_
#define VRKT_LOG_LOG_TEXT_H_

#include <string>

#include "log/log_reader.h"

// The report of a log's end, without the tool's name and a line end. It is empty for a
// complete or cut log, whose end is not reported.
std::string DescribeLogEnd(const LogEnd& end);

// The pattern of that report, for printf and for Lua. It takes the value of the end; for an unknown
// HIP version, its three numbers.
std::string GetLogEndPattern(const LogEnd& end);

#endif  // VRKT_LOG_LOG_TEXT_H_
