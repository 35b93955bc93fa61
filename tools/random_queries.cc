#include "random_queries.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string_view>

#include "files.h"
#include "log_builder.h"
#include "session_log.h"
#include "workloads.h"

namespace {

// Columns of all kinds, those that rows have in common first.
constexpr const char* kColumns[] = {"record",
                                    "time_ms",
                                    "path",
                                    "signal",
                                    "id",
                                    "request",
                                    "response_ms",
                                    "rowid",
                                    "line",
                                    "stamp",
                                    "uptime",
                                    "hip_version",
                                    "vif",
                                    "result_code",
                                    "rssi",
                                    "peer_index",
                                    "host_tag",
                                    "sequence_number",
                                    "bssid",
                                    "data",
                                    "peer_sta_address",
                                    "transmission_status",
                                    "reason_code"};
constexpr std::size_t kJoinColumns = 8;  // those of the first that joins use most

// A table of numbers and names, for joins.
constexpr const char* kPlainTable =
    "CREATE TABLE plain(x, y TEXT); INSERT INTO plain VALUES(1, 'mlme_connect_cfm'), (2, NULL), "
    "(30, 'ma_unitdata_req'), (65.0, 'x'), ('66', 'debug_word12_ind'), (NULL, 'mlme_scan_ind')";

// Errors that are no wrong answers. SQLite does not pass its arguments to a table-valued function
// that is the right table of a RIGHT JOIN, in the pass for rows without a match. Of two conditions
// on its path, the function uses one, which can be a path without a log. And its name is nested
// deeper in the parser than that of a table.
constexpr std::string_view kExpectedErrors[] = {"udi needs a path", "No such file or directory",
                                                "parser stack overflow"};

// Queries with more work than that are left out.
constexpr int kMaxWork = 15;  // in thousands of SQLite's operations

std::string ListColumns() {
  std::string columns = kColumns[0];
  for (std::size_t i = 1; i < std::size(kColumns); ++i) columns.append(", ").append(kColumns[i]);
  return columns;
}

std::string Quote(const std::string& text) { return "'" + text + "'"; }

// NOLINTBEGIN(misc-no-recursion): a condition contains others, to a limited depth

// Makes a query. A table is "@0@" and so on.
class QueryMaker {
 public:
  QueryMaker(std::uint64_t seed, std::size_t tables,
             const std::vector<std::vector<std::string>>& values)
      : random_(seed), tables_(tables), values_(values) {}

  std::string Make() {
    switch (Pick(8)) {
      case 0:
        return "SELECT signal, count(*)" +
               PickText({"", ", max(rowid)", ", min(rowid)", ", count(vif)"}) + " FROM " + Table() +
               " AS a" + Where({"a"}) + " GROUP BY signal" +
               PickText({"", " HAVING count(*) > 2", " ORDER BY 1 DESC"});
      case 1: {
        const std::string column = PickColumn();
        const std::string select = "SELECT " + column + " FROM ";
        return select + Table() + " AS a" + Where({"a"}) +
               PickText({" UNION ", " UNION ALL ", " EXCEPT ", " INTERSECT "}) + select + Table() +
               " AS a" + Where({"a"});
      }
      case 2:
        return "SELECT DISTINCT " + Columns({"a"}) + " FROM " + Table() + " AS a" + Where({"a"});
      case 3:
        return "SELECT a.path, a.record, " +
               PickText({"count(*)", "sum(a.vif)", "max(a.signal)", "lag(a.time_ms)"}) +
               " OVER (PARTITION BY a." + PickColumn() + " ORDER BY a.path, a.record) FROM " +
               Table() + " AS a" + Where({"a"});
      default:
        return Select();
    }
  }

 private:
  using Names = std::vector<std::string>;

  std::size_t Pick(std::size_t count) { return static_cast<std::size_t>(random_() % count); }
  std::string PickText(const std::vector<std::string>& texts) { return texts[Pick(texts.size())]; }
  std::size_t PickIndex() { return Pick(2) == 0 ? Pick(kJoinColumns) : Pick(std::size(kColumns)); }
  std::string PickColumn() { return kColumns[PickIndex()]; }
  std::string Table() { return "@" + std::to_string(Pick(tables_)) + "@"; }

  std::string Columns(const Names& names) {
    std::string columns;
    for (std::size_t i = 1 + Pick(3); i > 0; --i) {
      columns += (columns.empty() ? "" : ", ") + PickText(names) + "." + PickColumn();
    }
    return columns;
  }

  std::string Where(const Names& names) {
    return Pick(5) == 0 ? "" : " WHERE " + Condition(names, 2);
  }

  std::string Value(std::size_t column) {
    if (Pick(8) == 0) {
      return PickText({"NULL", "-1", "4096.5", "'2'", "x'01'", "1e300", "9223372036854775807", "''",
                       "1", "66.0", "' 3'"});
    }
    return PickText(values_[column]);
  }

  std::string Predicate(const Names& names) {
    const std::size_t index = PickIndex();
    const std::string name = PickText(names);
    const std::string column = name + "." + kColumns[index];
    const std::string op =
        PickText({" = ", " = ", " < ", " <= ", " > ", " >= ", " <> ", " IS ", " IS NOT "});
    switch (Pick(14)) {
      case 0:
        return column + PickText({" IS NULL", " IS NOT NULL"});
      case 1:
        return column + PickText({" BETWEEN ", " NOT BETWEEN "}) + Value(index) + " AND " +
               Value(index);
      case 2:
        return column + PickText({" IN (", " NOT IN ("}) + Value(index) + ", " + Value(index) +
               ", " + Value(index) + ")";
      case 3: {
        const std::string other = Pick(2) == 0 ? kColumns[index] : PickColumn();
        return column + PickText({" IN (SELECT ", " NOT IN (SELECT "}) + other + " FROM " +
               Table() + " AS z" + Where({"z"}) + ")";
      }
      case 4: {
        const std::string inner = Condition({"z"}, 1);
        return PickText({"EXISTS", "NOT EXISTS"}) + " (SELECT 1 FROM " + Table() + " AS z WHERE " +
               Join(name, "z") + " AND " + inner + ")";
      }
      case 5:
        return "(" + column + ", " + name + ".record)" + PickText({" = ", " < ", " >= "}) + "(" +
               Value(index) + ", " + Value(0) + ")";
      case 6:
        return column +
               PickText({" LIKE '%1%'", " = 'MA_UNITDATA_REQ' COLLATE NOCASE", " || '' = '1'"});
      case 7:
      case 8:
        return Join(name, PickText(names));
      default:
        return Pick(6) == 0 ? Value(index) + op + column : column + op + Value(index);
    }
  }

  // Between the columns of two tables.
  std::string Join(const std::string& left, const std::string& right) {
    const std::string column = kColumns[Pick(kJoinColumns)];
    switch (Pick(6)) {
      case 0:
        return left + "." + column + PickText({" < ", " >= ", " <> ", " IS "}) + right + "." +
               column;
      case 1:
        return left + ".record BETWEEN " + right + ".record - " + PickText({"1", "5"}) + " AND " +
               right + ".record";
      case 2:
        return left + ".time_ms BETWEEN " + right + ".time_ms - 100 AND " + right + ".time_ms" +
               PickText({"", " + 50"});
      case 3:
        return left + "." + PickText({"record", "request"}) + " = " + right + "." +
               PickText({"request", "record"});
      case 4:
        return left + ".path = " + right + ".path AND " + left + "." + column + " = " + right +
               "." + column;
      default:
        return left + "." + column + " = " + right + "." + column;
    }
  }

  std::string Condition(const Names& names, int depth) {
    if (depth == 0 || Pick(3) == 0) return (Pick(10) == 0 ? "NOT " : "") + Predicate(names);
    const std::string left = Condition(names, depth - 1);
    const std::string op = PickText({" AND ", " AND ", " OR "});
    return "(" + left + op + Condition(names, depth - 1) + ")";
  }

  // Something to read from, with the columns of a log.
  std::string Source() {
    if (Pick(6) != 0) return Table();
    const std::string table = Table();
    return "(SELECT " + ListColumns() + " FROM " + table + " AS z" + Where({"z"}) +
           PickText({"", "", " ORDER BY path, record LIMIT 9"}) + ")";
  }

  std::string Select() {
    Names names = {"a"};
    std::string from = Source() + " AS a";
    for (std::size_t joined = Pick(3); joined > 0; --joined) {
      const std::string name = joined == 1 ? "b" : "c";
      if (Pick(4) == 0) {
        from += PickText({" JOIN", " LEFT JOIN", " RIGHT JOIN", " FULL JOIN"}) + " plain AS p" +
                name + " ON ";
        from +=
            Pick(2) == 0
                ? Condition(names, 1)
                : "p" + name +
                      PickText({".x = a.record", ".y = a.signal", ".x > a.record", ".x = a.vif"});
        continue;
      }
      const std::string left = PickText(names);
      names.push_back(name);
      const std::string join =
          PickText({" JOIN ", " LEFT JOIN ", " LEFT JOIN ", " RIGHT JOIN ", " FULL JOIN ", ", "});
      from += join + Source() + " AS " + name;
      if (join == ", ") continue;
      const std::string condition = Pick(5) == 0 ? Condition(names, 1) : Join(left, name);
      from += " ON " + condition + (Pick(2) == 0 ? " AND " + Condition(names, 1) : "");
    }
    const std::string where = Where(names);
    switch (Pick(4)) {
      case 0:
        return "SELECT count(*), sum(" + names.back() + ".record), max(a." + PickColumn() +
               ") FROM " + from + where;
      case 1:
        return "SELECT a." + PickColumn() + ", count(*) FROM " + from + where + " GROUP BY 1";
      case 2: {
        std::string order;
        for (const std::string& name : names) {
          order += (order.empty() ? "" : ", ") + name + ".path, " + name + ".record" +
                   PickText({"", " DESC"});
        }
        return "SELECT " + OrderedColumns(names) + " FROM " + from + where + " ORDER BY " + order +
               " LIMIT " + std::to_string(1 + Pick(20));
      }
      default:
        return "SELECT " + Columns(names) + " FROM " + from + where +
               (Pick(6) == 0 ? " ORDER BY a.record" + PickText({"", " DESC"}) : "");
    }
  }

  static std::string OrderedColumns(const Names& names) {
    std::string columns;
    for (const std::string& name : names) {
      columns += (columns.empty() ? "" : ", ") + name + ".path, " + name + ".record";
    }
    return columns;
  }

  std::mt19937_64 random_;
  std::size_t tables_;
  const std::vector<std::vector<std::string>>& values_;
};

// NOLINTEND(misc-no-recursion)

// What a statement answers.
struct Answer {
  std::vector<std::string> rows;  // sorted, because the order of most queries is not defined
  std::string error;
  bool is_complete = true;  // unless it took too long
};

Answer Run(sqlite3* db, const std::string& sql) {
  Answer answer;
  int work = 0;
  const auto limit_work = [](void* done) { return ++*static_cast<int*>(done) > kMaxWork ? 1 : 0; };
  sqlite3_progress_handler(db, 1000, limit_work, &work);
  sqlite3_stmt* statement = nullptr;
  int status = sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr);
  while (status == SQLITE_OK && (status = sqlite3_step(statement)) == SQLITE_ROW) {
    status = SQLITE_OK;
    std::string row;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement, i));
      row += std::to_string(sqlite3_column_type(statement, i)) + ':';
      row.append(bytes, static_cast<unsigned>(sqlite3_column_bytes(statement, i)));
      row += '|';
    }
    answer.rows.push_back(row);
  }
  answer.is_complete = status != SQLITE_INTERRUPT;
  if (status != SQLITE_DONE) answer.error = sqlite3_errmsg(db);
  sqlite3_finalize(statement);
  sqlite3_progress_handler(db, 0, nullptr, nullptr);
  std::sort(answer.rows.begin(), answer.rows.end());
  return answer;
}

// Returns a row of one text, without the type before and the bar after it.
std::string RemoveType(std::string row) {
  row.pop_back();
  return row.erase(0, row.find(':') + 1);
}

std::string Replace(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// Time runs back, and wraps.
std::string MakeLogOfOddTimes() {
  Log log;
  log.Header("14.5.12").TimeRef(1000).Load(1500ms).Load(-1ms).Load(1400ms);
  return log.TimeRef(0x7FFFFFFF, 3, 999ms).Load(1000ms).TimeRef(999).Load(1500ms).bytes();
}

}  // namespace

RandomQueries::RandomQueries(sqlite3* db, std::string directory)
    : db_(db), directory_(std::move(directory)) {
  const std::string session = SessionLog().bytes();
  const std::string mixed = MakeWorkload("mixed", 400);
  const auto write = [this](const char* name, const std::string& log) {
    WriteFile(directory_ + "/" + name, log);
    return Quote(directory_ + "/" + name);
  };
  const std::string whole = write("whole", session);
  const std::string cut = write("cut", session.substr(0, session.size() / 3));
  const std::string head = write("head", session.substr(0, session.size() / 6));
  const std::string odd = write("odd", MakeLogOfOddTimes());
  const std::string damaged = write("damaged", mixed + "damage");
  Execute(kPlainTable);
  Execute("CREATE VIRTUAL TABLE temp.whole USING udi(" + whole + ")");
  Execute("CREATE VIRTUAL TABLE temp.several USING udi(" + cut + "," + odd + "," + head + ")");
  Execute("CREATE VIRTUAL TABLE temp.damaged USING udi(" + damaged + ")");
  Execute("CREATE TEMP VIEW seen AS SELECT " + ListColumns() +
          " FROM whole WHERE vif = 1 OR request > 0");
  AddTable("whole", "whole_copy");
  AddTable("several", "several_copy");
  AddTable("damaged", "damaged_copy");
  AddTable("seen", "seen_copy");
  AddTable("udi(" + cut + ")", "cut_copy");
  for (const char* column : kColumns) {
    Answer some =
        Run(db_, "SELECT DISTINCT quote(" + std::string(column) + ") FROM several_copy LIMIT 40");
    values_.emplace_back();
    for (const std::string& value : some.rows) values_.back().push_back(RemoveType(value));
  }
}

void RandomQueries::Execute(const std::string& sql) {
  if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return;
  std::fprintf(stderr, "%s: %s\n", sql.c_str(), sqlite3_errmsg(db_));
  std::abort();
}

// The copy's columns have the types of the table's, because they decide how values compare.
void RandomQueries::AddTable(const std::string& table, const std::string& copy) {
  std::string types;
  for (const char* column : kColumns) {
    const std::string type = "SELECT type FROM pragma_table_xinfo('udi') WHERE name = ";
    const Answer found = Run(db_, type + Quote(column));
    types += (types.empty() ? "" : ", ") + std::string(column) + ' ' + RemoveType(found.rows.at(0));
  }
  Execute("CREATE TEMP TABLE " + copy + "(" + types + ")");
  Execute("INSERT INTO " + copy + " SELECT " + ListColumns() + " FROM " + table);
  tables_.emplace_back(table, copy);
}

std::string RandomQueries::Compare(std::uint64_t seed) {
  std::string query = QueryMaker(seed, tables_.size(), values_).Make();
  std::string about_copies = query;
  for (std::size_t i = 0; i < tables_.size(); ++i) {
    const std::string place = "@" + std::to_string(i) + "@";
    query = Replace(query, place, tables_[i].first);
    about_copies = Replace(about_copies, place, tables_[i].second);
  }
  const Answer expected = Run(db_, about_copies);
  if (!expected.is_complete) return "";
  const Answer answer = Run(db_, query);
  if (!answer.is_complete) return "";
  for (const std::string_view error : kExpectedErrors) {
    if (answer.error.find(error) != std::string::npos) return "";
  }
  if (!answer.rows.empty()) ++count_with_rows_;
  if (answer.rows == expected.rows && answer.error == expected.error) return "";
  return "seed " + std::to_string(seed) + ": " + query + "\n" + std::to_string(answer.rows.size()) +
         " rows " + answer.error + ", expected " + std::to_string(expected.rows.size()) + " rows " +
         expected.error;
}
