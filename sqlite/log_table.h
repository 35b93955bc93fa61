#ifndef VRKT_SQLITE_LOG_TABLE_H_
#define VRKT_SQLITE_LOG_TABLE_H_

#include "sqlite_api.h"

// The module of the table udi.
extern const sqlite3_module kLogModule;

#endif  // VRKT_SQLITE_LOG_TABLE_H_
