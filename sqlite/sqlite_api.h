#ifndef VRKT_SQLITE_SQLITE_API_H_
#define VRKT_SQLITE_SQLITE_API_H_

#include <sqlite3ext.h>

#include <new>

// SQLite's functions. A loaded extension calls them through a table that SQLite gives to
// its entry point. With SQLITE_CORE defined, the extension is part of a program and calls
// them directly.
SQLITE_EXTENSION_INIT3

// The first version with sqlite3_vtab_in, sqlite3_vtab_distinct and sqlite3_vtab_rhs_value.
inline constexpr int kOldestSqlite = 3038000;
static_assert(SQLITE_VERSION_NUMBER >= kOldestSqlite, "SQLite 3.38 or later is required");

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
