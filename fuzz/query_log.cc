// Runs queries over any log. The extension is part of this program.

#include <sqlite3.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "expect.h"
#include "mod_udi.h"

namespace {

// Each names a log as ?1.
constexpr const char* kQueries[] = {
    "SELECT * FROM udi_log(?1)",
    "SELECT stamp, line, json, path, id, hip_version, uptime FROM udi(?1)",
    "SELECT request, vif, data, sequence_number, timestamp, rssi FROM udi(?1) WHERE id > 4000",
    "SELECT signal, count(*) FROM udi(?1) GROUP BY signal ORDER BY signal DESC",
    "SELECT record FROM udi(?1) WHERE signal IN ('ma_unitdata_req', 'mlme_connect_cfm') OR id = 66",
    "SELECT max(json ->> '$.time_ms') FROM udi(?1) WHERE vif > 0 AND response_ms IS NOT NULL",
};
// Of a row per record, for comparison.
constexpr const char* kCounts =
    "SELECT (SELECT records FROM udi_log(?1)) = count(*) AND count(*) = coalesce(max(record), 0) "
    "AND sum(json_valid(json)) IS nullif(count(*), 0) FROM udi(?1)";

sqlite3* OpenDatabase() {
  sqlite3* db = nullptr;
  char* error = nullptr;
  if (sqlite3_open(":memory:", &db) != SQLITE_OK ||
      sqlite3_modudi_init(db, &error, nullptr) != SQLITE_OK) {
    std::abort();
  }
  return db;
}

// Reads all columns of all rows. Returns the last row's first column, or -1.
int Run(sqlite3* db, const char* sql, const std::string& path) {
  sqlite3_stmt* statement = nullptr;
  Expect(sqlite3_prepare_v2(db, sql, -1, &statement, nullptr) == SQLITE_OK, sqlite3_errmsg(db),
         sql);
  sqlite3_bind_text(statement, 1, path.c_str(), -1, SQLITE_STATIC);
  int first = -1;
  int status = SQLITE_ROW;
  while ((status = sqlite3_step(statement)) == SQLITE_ROW) {
    first = sqlite3_column_int(statement, 0);
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      static_cast<void>(sqlite3_column_blob(statement, i));
    }
  }
  Expect(status == SQLITE_DONE || status == SQLITE_ERROR, "an unexpected error",
         sqlite3_errmsg(db));
  sqlite3_finalize(statement);
  return status == SQLITE_DONE ? first : -1;
}

// A file in memory, with a path.
std::string GetPath(int file) { return "/proc/self/fd/" + std::to_string(file); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): opened once
  static sqlite3* const db = OpenDatabase();
  static const int file = memfd_create("log", MFD_CLOEXEC);
  const auto length = static_cast<off_t>(size);
  if (ftruncate(file, length) != 0 || pwrite(file, data, size, 0) != length) std::abort();
  for (const char* sql : kQueries) Run(db, sql, GetPath(file));
  Expect(Run(db, kCounts, GetPath(file)) != 0, "the tables differ", "");
  return 0;
}
