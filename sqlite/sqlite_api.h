#ifndef VRKT_SQLITE_SQLITE_API_H_
#define VRKT_SQLITE_SQLITE_API_H_

#include <sqlite3ext.h>

#include <new>

// SQLite's functions. A loaded extension calls them through a table that SQLite gives to
// its entry point. With SQLITE_CORE defined, the extension is part of a program and calls
// them directly.
SQLITE_EXTENSION_INIT3

// The first version in which sqlite3_vtab_config knows SQLITE_VTAB_DIRECTONLY.
inline constexpr int kOldestSqlite = 3031000;

// Runs a callback and returns its status. SQLite is C, so no exception may reach it. The
// only one that occurs is that there is no memory.
template <typename Callback>
int CatchNoMemory(Callback callback) {
  try {
    return callback();
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  } catch (...) {
    return SQLITE_INTERNAL;
  }
}

#endif  // VRKT_SQLITE_SQLITE_API_H_
