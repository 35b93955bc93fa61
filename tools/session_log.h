#ifndef VRKT_TOOLS_SESSION_LOG_H_
#define VRKT_TOOLS_SESSION_LOG_H_

#include "log_builder.h"

// Makes the log in examples/session.udi.
Log SessionLog();

#endif  // VRKT_TOOLS_SESSION_LOG_H_
