#ifndef VRKT_TOOLS_RANDOM_QUERIES_H_
#define VRKT_TOOLS_RANDOM_QUERIES_H_

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// Compares the answers to random queries about logs with those about ordinary tables that
// have the same rows. What the table udi does with the constraints, the order and the columns of a
// query must not change an answer.
class RandomQueries {
 public:
  // The database has the extension. Makes logs in an existing directory, tables of them, and
  // ordinary tables.
  RandomQueries(sqlite3* db, std::string directory);

  // Makes a query, the same for the same seed. Returns nothing, or the query and how its
  // answers differ.
  std::string Compare(std::uint64_t seed);

  // The number of queries so far that had rows.
  int count_with_rows() const { return count_with_rows_; }

 private:
  void Execute(const std::string& sql);
  void AddTable(const std::string& table, const std::string& copy);

  sqlite3* db_;
  std::string directory_;
  std::vector<std::pair<std::string, std::string>> tables_;  // and their copies
  std::vector<std::vector<std::string>> values_;             // some of each column, as SQL
  int count_with_rows_ = 0;
};

#endif  // VRKT_TOOLS_RANDOM_QUERIES_H_
