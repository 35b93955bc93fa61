#ifndef VRKT_TESTS_SUPPORT_TOOL_LINES_H_
#define VRKT_TESTS_SUPPORT_TOOL_LINES_H_

#include <string>

#include "support/lines.h"

// What the tool prints for a log, record by record: after each stamp, or with the stamp. A
// signal that is too short prints nothing, so its stamp is followed by the next one.
Lines ToolLines(const std::string& log, bool with_stamps = false);

#endif  // VRKT_TESTS_SUPPORT_TOOL_LINES_H_
