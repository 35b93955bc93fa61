// The log as SQL tables, an extension of SQLite:
//
//   udi(path)      a row per line that the tool prints, see udi_table.cc
//   udi_log(path)  a row per log, see udi_log_table.cc
//   udi_fields     a row per field of each signal of each version, see udi_fields_table.cc
//   udi_address()  a function, see below
//
// A virtual table reads the log itself. Nothing is imported: a log of many gigabytes is
// read once per query, forward only, in constant memory, and a live log gives its rows as
// they are complete. What a query does not name is not computed.
//
// Threads: SQLite serialises the use of one connection. Different connections can read
// logs in different threads at the same time, because all state is in the cursors. What
// they share is constant, except the pipes that were read.

#include "mod_udi.h"

#include <cstddef>
#include <string_view>

#include "sqlite_api.h"
#include "udi_fields_table.h"
#include "udi_log_table.h"
#include "udi_table.h"
SQLITE_EXTENSION_INIT1

namespace {

// udi_address('0a0b0c0d0e0f') is '0a:0b:0c:0d:0e:0f', as columns with addresses show it. It is
// NULL for what is not the digits of six bytes.
void ReturnAddress(sqlite3_context* context, int /*argc*/, sqlite3_value** argv) {
  constexpr std::size_t kDigits = 12;
  if (sqlite3_value_type(argv[0]) != SQLITE_TEXT) return;
  const void* const text = sqlite3_value_text(argv[0]);
  if (text == nullptr) {
    sqlite3_result_error_nomem(context);
    return;
  }
  const std::string_view digits(static_cast<const char*>(text),
                                static_cast<std::size_t>(sqlite3_value_bytes(argv[0])));
  const bool has_other = digits.find_first_not_of("0123456789abcdef") != std::string_view::npos;
  if (digits.size() != kDigits || has_other) return;
  char address[kDigits + 5];
  for (std::size_t i = 0; i < sizeof address; ++i) {
    address[i] = i % 3 == 2 ? ':' : digits[i - i / 3];
  }
  sqlite3_result_text(context, address, sizeof address, SQLITE_TRANSIENT);
}

}  // namespace

int sqlite3_modudi_init(sqlite3* db, char** error, const sqlite3_api_routines* api) {
  SQLITE_EXTENSION_INIT2(api);
  static_cast<void>(api);
  if (sqlite3_libversion_number() < kOldestSqlite) {
    *error =
        sqlite3_mprintf("mod_udi needs SQLite 3.38 or later, this is %s", sqlite3_libversion());
    return SQLITE_ERROR;
  }
  int status = sqlite3_create_module_v2(db, "udi", &kUdiModule, nullptr, nullptr);
  if (status != SQLITE_OK) return status;
  status = sqlite3_create_module_v2(db, "udi_log", &kUdiLogModule, nullptr, nullptr);
  if (status != SQLITE_OK) return status;
  status = sqlite3_create_module_v2(db, "udi_fields", &kUdiFieldsModule, nullptr, nullptr);
  if (status != SQLITE_OK) return status;
  status = sqlite3_create_function_v2(db, "udi_address", 1,
                                      SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS,
                                      nullptr, ReturnAddress, nullptr, nullptr, nullptr);
#ifndef SQLITE_CORE
  // Each time that it is loaded, the C++ runtime takes memory that it never releases. So the
  // extension stays loaded after the connection is closed.
  if (status == SQLITE_OK) return SQLITE_OK_LOAD_PERMANENTLY;
#endif
  return status;
}
