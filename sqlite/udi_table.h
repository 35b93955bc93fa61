#ifndef VRKT_SQLITE_UDI_TABLE_H_
#define VRKT_SQLITE_UDI_TABLE_H_

#include "sqlite_api.h"

// The module of the table udi.
extern const sqlite3_module kUdiModule;

#endif  // VRKT_SQLITE_UDI_TABLE_H_
