// Compares random queries on the tables with the same on ordinary tables. The input is the seed.

#include <sqlite3.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "expect.h"
#include "mod_udi.h"
#include "random_queries.h"

namespace {

RandomQueries MakeQueries() {
  sqlite3* db = nullptr;
  const std::string directory = "compare_queries.logs";
  std::filesystem::create_directory(directory);
  if (sqlite3_open(":memory:", &db) != SQLITE_OK ||
      sqlite3_modudi_init(db, nullptr, nullptr) != SQLITE_OK) {
    std::abort();
  }
  return {db, directory};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): made once
  static RandomQueries queries = MakeQueries();
  std::uint64_t seed = 0;
  for (std::size_t i = 0; i < size; ++i) seed = seed * 31 + data[i];
  const std::string difference = queries.Compare(seed);
  Expect(difference.empty(), difference.c_str(), "");
  return 0;
}
