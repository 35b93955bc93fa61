#ifndef VRKT_SQLITE_MOD_UDI_H_
#define VRKT_SQLITE_MOD_UDI_H_

#include <sqlite3.h>

struct sqlite3_api_routines;

// The entry point of the extension mod_udi. SQLite makes its name from the name of the
// file. A program that contains the extension passes it to sqlite3_auto_extension, or
// calls it with a null `api`.
extern "C" [[gnu::visibility("default")]] int sqlite3_modudi_init(sqlite3* db, char** error,
                                                                  const sqlite3_api_routines* api);

#endif  // VRKT_SQLITE_MOD_UDI_H_
