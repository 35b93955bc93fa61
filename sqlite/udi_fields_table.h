#ifndef VRKT_SQLITE_UDI_FIELDS_TABLE_H_
#define VRKT_SQLITE_UDI_FIELDS_TABLE_H_

#include "sqlite_api.h"

// The module of the table udi_fields.
extern const sqlite3_module kUdiFieldsModule;

#endif  // VRKT_SQLITE_UDI_FIELDS_TABLE_H_
