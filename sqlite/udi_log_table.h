#ifndef VRKT_SQLITE_UDI_LOG_TABLE_H_
#define VRKT_SQLITE_UDI_LOG_TABLE_H_

#include "sqlite_api.h"

// The module of the table udi_log.
extern const sqlite3_module kUdiLogModule;

#endif  // VRKT_SQLITE_UDI_LOG_TABLE_H_
