// The log as SQL tables, an extension of SQLite:
//
//   udi(path)      a row per line that the tool prints, see udi_table.cc
//   udi_log(path)  a row per log, see udi_log_table.cc
//   udi_fields     a row per field of each signal of each version, see udi_fields_table.cc
//
// A virtual table reads the log itself. Nothing is imported: a log of many gigabytes is
// read once per query, forward only, in constant memory, and a live log gives its rows as
// they are complete. What a query does not name is not computed.
//
// Threads: SQLite serialises the use of one connection. Different connections can read
// logs in different threads at the same time, because all state is in the cursors. What
// they share is constant, except the pipes that were read.

#include "mod_udi.h"

#include "sqlite_api.h"
#include "udi_fields_table.h"
#include "udi_log_table.h"
#include "udi_table.h"
SQLITE_EXTENSION_INIT1

int sqlite3_modudi_init(sqlite3* db, char** error, const sqlite3_api_routines* api) {
  SQLITE_EXTENSION_INIT2(api);
  static_cast<void>(api);
  if (sqlite3_libversion_number() < kOldestSqlite) {
    *error =
        sqlite3_mprintf("mod_udi needs SQLite 3.31 or later, this is %s", sqlite3_libversion());
    return SQLITE_ERROR;
  }
  int status = sqlite3_create_module_v2(db, "udi", &kUdiModule, nullptr, nullptr);
  if (status != SQLITE_OK) return status;
  status = sqlite3_create_module_v2(db, "udi_log", &kUdiLogModule, nullptr, nullptr);
  if (status != SQLITE_OK) return status;
  status = sqlite3_create_module_v2(db, "udi_fields", &kUdiFieldsModule, nullptr, nullptr);
#ifndef SQLITE_CORE
  // Each time that it is loaded, the C++ runtime takes memory that it never releases. So the
  // extension stays loaded after the connection is closed.
  if (status == SQLITE_OK) return SQLITE_OK_LOAD_PERMANENTLY;
#endif
  return status;
}
