// The built extension, loaded by the SQLite library in this process.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "files.h"
#include "log_builder.h"
#include "random_queries.h"
#include "reference_log.h"
#include "session_log.h"
#include "support/decode_in_process.h"
#include "support/lines.h"
#include "support/process.h"
#include "support/test_logs.h"
#include "support/tool_lines.h"

namespace {

// A statement and its current row.
class Statement {
 public:
  Statement(sqlite3* db, const std::string& sql)
      : db_(db), status_(sqlite3_prepare_v2(db, sql.c_str(), -1, &statement_, nullptr)) {}
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  bool Step() {
    if (statement_ != nullptr) status_ = sqlite3_step(statement_);
    return status_ == SQLITE_ROW;
  }
  std::string error() const { return status_ == SQLITE_DONE ? "" : sqlite3_errmsg(db_); }
  int CountColumns() const { return sqlite3_column_count(statement_); }
  std::string GetName(int i) const { return sqlite3_column_name(statement_, i); }
  int GetType(int i) const { return sqlite3_column_type(statement_, i); }
  std::string Get(int i) const {
    const void* const bytes = sqlite3_column_blob(statement_, i);
    const auto size = static_cast<unsigned>(sqlite3_column_bytes(statement_, i));
    return {static_cast<const char*>(bytes), size};
  }

 private:
  sqlite3* db_;
  sqlite3_stmt* statement_ = nullptr;
  int status_;
};

class Extension : public testing::Test {
 protected:
  void SetUp() override {
    setenv("TZ", "UTC0", 1);
    ASSERT_EQ(sqlite3_open(":memory:", &db_), SQLITE_OK);
    sqlite3_enable_load_extension(db_, 1);
    char* error = nullptr;
    ASSERT_EQ(sqlite3_load_extension(db_, VRKT_EXTENSION, nullptr, &error), SQLITE_OK) << error;
  }
  void TearDown() override { EXPECT_EQ(sqlite3_close(db_), SQLITE_OK); }

  std::string PathOf(const std::string& name) const { return directory_.path() + "/" + name; }

  // Replaces @ by the directory of the test's files.
  std::string ExpandPaths(const std::string& sql) const {
    return std::regex_replace(sql, std::regex("@"), directory_.path() + "/");
  }

  // Returns the rows, with "|" between the columns, or the error.
  Lines Query(const std::string& sql) const {
    Statement statement(db_, ExpandPaths(sql));
    Lines rows;
    while (statement.Step()) {
      std::string row;
      for (int i = 0; i < statement.CountColumns(); ++i) {
        if (i > 0) row += '|';
        row += statement.Get(i);
      }
      rows.push_back(row);
    }
    if (!statement.error().empty()) rows.push_back(statement.error());
    return rows;
  }

  TemporaryDirectory directory_;
  sqlite3* db_ = nullptr;
};

// As in 0x00ff.
std::string FormatHex(unsigned number, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%0*x", digits, number);
  return text;
}

// The texts that a line can show for a value, longest first.
Lines ListTexts(int type, const std::string& value) {
  if (type == SQLITE_INTEGER) {
    const auto number = static_cast<unsigned>(std::stoll(value));
    return {FormatHex(number, 8), FormatHex(number, 4), FormatHex(number, 2), value};
  }
  if (value[0] != '[') return {"{" + value + "}", value};
  std::string words = "[";
  for (std::size_t at = 1; at < value.size(); at = value.find_first_of(",]", at) + 1) {
    words += FormatHex(static_cast<unsigned>(std::stoul(value.substr(at))), 4) + " ";
  }
  return {words + "]"};
}

// Reads a line from left to right by the names and values of its row, and returns what is
// left: nothing, if the values are those of the line. Appends the members to `json`.
std::string ReadLine(const Statement& row, std::string line, std::string& json) {
  std::map<std::string, int> fields;
  for (int i = 4; i < row.CountColumns(); ++i) {  // after the line and the JSON object
    if (row.GetType(i) != SQLITE_NULL) fields[row.GetName(i)] = i;
  }
  std::set<std::string> seen;
  while (!line.empty()) {
    const std::string rest = line.substr(line[0] == ' ' ? 1 : 0);
    const std::string name = rest.substr(0, rest.find(':'));
    if (!fields.contains(name)) break;
    const int type = row.GetType(fields[name]);
    const std::string value = row.Get(fields[name]);
    const Lines texts = ListTexts(type, value);
    const auto text = std::ranges::find_if(texts, [&](const std::string& shown) {
      return rest.compare(name.size() + 1, shown.size(), shown) == 0;
    });
    if (text == texts.end()) break;
    line = rest.substr(name.size() + 1 + text->size());
    if (!seen.insert(name).second) continue;
    const std::string quote = type == SQLITE_INTEGER || value[0] == '[' ? "" : "\"";
    json += ",\"" + name + "\":" + quote + value + quote;
  }
  return line + (seen.size() == fields.size() ? "" : " (lacks a field)");
}

// Differences between udi_fields and what a log shows that has every field and label.
constexpr const char* kWrongFields = R"(
    WITH
      known AS (SELECT * FROM udi_fields WHERE hip_version = (SELECT max(hip_version) FROM udi('@log'))),
      shown AS MATERIALIZED (
        SELECT DISTINCT signal, member.key AS field, member.type, member.value
        FROM udi('@log') AS log JOIN json_each(log.json) AS member
        WHERE member.key NOT IN ('path', 'record', 'hip_version', 'stamp', 'time_ms', 'signal', 'line')),
      fields AS (SELECT signal, field, kind, type, value FROM shown JOIN known USING (signal, field)),
      labels AS (SELECT DISTINCT label.value FROM known JOIN json_each(known.labels) AS label)
    SELECT 'unknown', signal, field FROM (SELECT signal, field FROM shown EXCEPT SELECT signal, field FROM known)
    UNION ALL SELECT 'not shown', signal, field FROM (SELECT signal, field FROM known EXCEPT SELECT signal, field FROM shown)
    UNION ALL SELECT 'kind', signal, field FROM fields WHERE instr(
        CASE kind WHEN 'integer' THEN 'integer' WHEN 'label' THEN 'text integer'
        WHEN 'array' THEN 'array' ELSE 'text' END, type) = 0
    UNION ALL SELECT 'unknown', value, NULL FROM (SELECT value FROM fields WHERE kind = 'label' AND type = 'text' EXCEPT SELECT value FROM labels)
    UNION ALL SELECT 'not shown', value, NULL FROM (SELECT value FROM labels EXCEPT SELECT value FROM fields))";

// Every line is the tool's, and says the same as the columns and the JSON object.
TEST_F(Extension, EveryValueOfEveryVersion) {
  std::string query =
      "SELECT stamp || ' ' || line, json, "
      "iif(instr(line, signal) = 1, substr(line, 1 + length(signal)), line), "
      "printf('{\"path\":\"%s\",\"record\":%d,\"stamp\":\"%s\",\"time_ms\":%d,"
      "\"hip_version\":\"%s\",\"signal\":\"%s\"', path, record, stamp, time_ms, hip_version, "
      "signal) || "
      "iif(line = '', ',\"line\":\"\"', '')";
  for (const std::string& name :
       Query("SELECT name FROM pragma_table_xinfo('udi') WHERE cid > 16")) {
    query += ", \"" + name + "\"";
  }
  for (const HipVersionName& version : kHipVersionNames) {
    const std::string log = MakeReferenceLog(version.tag).bytes();
    WriteFile(PathOf("log"), log);
    Statement rows(db_, ExpandPaths(query + " FROM udi('@log')"));
    for (const std::string& line : ToolLines(log, true)) {
      ASSERT_TRUE(rows.Step()) << line;
      ASSERT_EQ(rows.Get(0), line);
      std::string json = rows.Get(3);
      ASSERT_EQ(ReadLine(rows, rows.Get(2), json), "") << line;
      ASSERT_EQ(rows.Get(1), json + "}");
    }
    ASSERT_FALSE(rows.Step());
    ASSERT_EQ(Query(kWrongFields), Lines());
  }
}

TEST_F(Extension, Exchanges) {
  WriteFile(PathOf("log"), MakeExchangeLog().bytes());
  Lines expected;
  for (const ExchangeRecord& record : ListExchangeRecords()) {
    expected.push_back("|");
    if (record.answers == 0) continue;
    expected.back() = std::to_string(record.answers) + "|" + std::to_string(record.response_ms);
  }
  EXPECT_EQ(FindDifference(Query("SELECT request, response_ms FROM udi('@log')"), expected), "");
}

// A damaged log has the tool's lines, and an ending that the tool reports. A damaged header
// is an error.
TEST_F(Extension, DamagedLogs) {
  std::set<std::string> endings;
  for (const std::string& log : MakeDamagedLogs(400)) {
    WriteFile(PathOf("log"), log);
    const Lines rows = Query("SELECT stamp || ' ' || line FROM udi('@log')");
    const Lines summary = Query("SELECT path = '@log', records, ending FROM udi_log('@log')");
    const std::string report = DecodeInProcess(log).err;
    ASSERT_EQ(summary.size(), 1U);
    const std::string counts = "1|" + std::to_string(rows.size()) + "|";
    const bool is_read = summary[0].starts_with(counts);
    const std::string text = summary[0].substr(is_read ? counts.size() : 0);
    endings.insert(text);
    if (report.find("Version") == std::string::npos && !report.empty()) {
      ASSERT_EQ(rows, summary);
      ASSERT_TRUE(text.starts_with(PathOf("log: ")));
      ASSERT_NE(report.find(text.substr(PathOf("log: ").size()) + "\n"), std::string::npos) << text;
      continue;
    }
    ASSERT_EQ(rows, ToolLines(log, true));
    ASSERT_TRUE(is_read) << text;
    // Up to the bytes that it counts, the log is whole.
    const std::string bytes = Query("SELECT bytes FROM udi_log('@log')")[0];
    WriteFile(PathOf("whole"), log.substr(0, std::stoul(bytes)));
    ASSERT_EQ(
        Query("SELECT records || '|' || bytes || '|' || ending FROM udi_log('@whole')"),
        Lines{std::to_string(rows.size()) + "|" + bytes + (bytes == "0" ? "|empty" : "|complete")});
    if (text == "complete" || text == "cut") continue;
    ASSERT_NE(report.find(": " + text + "\n"), std::string::npos) << report << text;
  }
  EXPECT_GT(endings.size(), 20U);
}

TEST_F(Extension, Queries) {
  const std::string session = SessionLog().bytes();
  WriteFile(PathOf("s"), session);
  WriteFile(PathOf("it's \"a\", (b]"), session.substr(0, session.size() - 1));
  WriteFile(PathOf("times"), Log()
                                 .Header("14.5.12")
                                 .TimeRef(1000)
                                 .Load(1500ms)
                                 .Load(-1ms)
                                 .TimeRef(0x7FFFFFFF, 0xFFFFFFFF, 999ms)
                                 .Load(1000ms)
                                 .bytes());
  WriteFile(PathOf("empty"), "");
  WriteFile(PathOf("header"), session.substr(0, 11));
  WriteFile(PathOf("text"), "no log at all");
  ASSERT_EQ(mkfifo(PathOf("pipe").c_str(), 0600), 0);
  const int pipe = open(PathOf("pipe").c_str(), O_RDWR);  // its first reader finds a writer
  ASSERT_EQ(write(pipe, session.data(), session.size()), static_cast<ssize_t>(session.size()));
  const struct {
    const char* sql;
    Lines rows;
  } kCases[] = {
      {"SELECT * FROM udi('@s') LIMIT 1 OFFSET 64",
       {"65|2026/06/01-07:00:42.011|1780297242011|mlme_connect_cfm|mlme_connect_cfm vif:1 "
        "result_code:host_request_failed spare_1:0 spare_2:0 spare_3:0"}},
      {"SELECT record, uptime, hip_version, id IS NULL, signal IS NULL FROM udi('@s') WHERE uptime",
       {"1|4711|14.3.10|1|1", "71|3|14.5.12|1|1"}},
      {"SELECT signal, id, line, json_remove(json, '$.path', '$.record', '$.hip_version') FROM "
       "udi('@s') WHERE record BETWEEN 66 AND 68 AND vif IS "
       "NULL",
       {"ma_unitdata_cfm|4352||{\"stamp\":\"2026/06/"
        "01-07:00:42.200\",\"time_ms\":1780297242200,"
        "\"signal\":\"ma_unitdata_cfm\",\"line\":\"\"}",
        "|4215|Unknown Hip Signal : 0x1077|{\"stamp\":\"2026/06/01-07:00:42.250\",\"time_ms\":"
        "1780297242250,\"signal\":null,\"line\":\"Unknown Hip Signal : 0x1077\"}",
        "|66|Unknown Driver Signal : 0x0042|{\"stamp\":\"2026/06/01-07:00:42.260\",\"time_ms\":"
        "1780297242260,\"signal\":null,\"line\":\"Unknown Driver Signal : 0x0042\"}"}},
      {"SELECT record, time_ms, uptime, json_remove(json, '$.path', '$.record', '$.hip_version') "
       "FROM udi('@times')",
       {"1|1001500||{\"stamp\":\"1970/01/01-00:16:41.500\",\"time_ms\":1001500,\"signal\":null,"
        "\"line\":\"Driver: Loaded\"}",
        "2|999999||{\"stamp\":\"1970/01/01-00:16:40.999\",\"time_ms\":999999,\"signal\":null,"
        "\"line\":\"Driver: Loaded\"}",
        "3|2147483647999|-1|{\"stamp\":\"2038/01/19-03:14:07.999\",\"time_ms\":2147483647999,"
        "\"signal\":null,\"uptime\":-1,\"line\":\"Driver: Uptime: -1 seconds\"}",
        "4|-2147483648000||{\"stamp\":\"1901/12/13-20:45:52.000\",\"time_ms\":-2147483648000,"
        "\"signal\":null,\"line\":\"Driver: Loaded\"}"}},
      {"SELECT sequence_number ->> 0, json_array_length(sequence_number), key, timestamp FROM "
       "udi('@s') WHERE record IN (12, 29) ORDER BY record DESC",
       {"1|8|000102030405060708090a0b0c0d0e0f|", "|||0x40e2010000000000"}},
      {"SELECT record, json_group_array(json) ->> '$[0].signal' FROM udi('@s') WHERE record = 3",
       {"3|mlme_add_vif_req"}},
      {"SELECT udi_address(substr(frame, 21, 12)), dump_bytes = length(frame) / 2 FROM udi('@s') "
       "WHERE record = 8",
       {"0a:0b:0c:0d:0e:1f|1"}},
      {"SELECT udi_address('0a0b0c0d0e0'), udi_address('0a0b0c0d0e0z'), udi_address(x'00')",
       {"||"}},
      {"SELECT sum(failure), (SELECT count(*) FROM udi('@s') WHERE failure = 1) FROM udi('@s')",
       {"3|3"}},
      {"SELECT json ->> '$.path' = path, json ->> '$.record', json ->> '$.hip_version' FROM "
       "udi('@it''s \"a\", (b]') WHERE record = 70",
       {"1|70|14.3.10"}},
      {"SELECT signal, count(*) FROM udi('@s') GROUP BY signal ORDER BY signal DESC LIMIT 2",
       {"wlanlite_tx_start_req|1", "wlanlite_tx_start_cfm|1"}},
      {"SELECT count(*), sum(n) FROM (SELECT signal, count(*) AS n FROM udi('@s') GROUP BY 1)",
       {"33|76"}},
      {"SELECT path = '@s', * FROM udi_log('@s')",
       {"1|" + PathOf("s") + "|76|6778|14.3.10,14.5.12|1780297200000|1780297266500|complete"}},
      {"SELECT records, bytes, hip_versions, first_ms, ending FROM udi_log('@empty')",
       {"0|0|||empty"}},
      {"SELECT records, bytes, ending FROM udi_log('@header')", {"0|0|cut"}},
      {"SELECT rssi, rowid = record FROM udi('@s') WHERE rssi < 0 ORDER BY rssi",
       {"-77|1", "-71|1", "-48|1"}},
      {"SELECT records FROM udi_log('@s') WHERE ending = 'complete' AND path > '@a'", {"76"}},
      {"SELECT bytes, ending FROM udi_log('@it''s \"a\", (b]')", {"6708|cut"}},
      {"SELECT records FROM udi_log JOIN (SELECT '@s' AS name) ON path = name", {"76"}},
      {"SELECT count(*) FROM udi('@empty')", {"0"}},
      {"SELECT count(*) FROM udi(NULL), udi_log(NULL)", {"0"}},
      {"SELECT * FROM udi('@text')",
       {PathOf("text") + ": Bad Magic number detected in log file header. magic:0x6C206F6E"}},
      {"SELECT * FROM udi_log('@none')", {PathOf("none") + ": No such file or directory"}},
      {"SELECT count(*) FROM udi('@pipe') a, udi('@pipe') b",
       {PathOf("pipe") + ": a pipe can be read only once; save it in a file"}},
      {"SELECT * FROM udi", {"udi needs a path, as in udi('session.udi')"}},
      {"SELECT * FROM udi_log", {"udi_log needs a path, as in udi_log('session.udi')"}},
      {"CREATE VIRTUAL TABLE temp.bad USING udi('a' 'b')",
       {"not a path, as in 'session.udi': 'a' 'b'"}},
      {"CREATE VIRTUAL TABLE temp.log USING udi('@s', @empty, \"@it's \"\"a\"\", (b]\")", {}},
      {"SELECT path, min(record), max(record), count(request) FROM log GROUP BY path ORDER BY 1",
       {PathOf("it's \"a\", (b]") + "|1|75|30", PathOf("s") + "|1|76|30"}},
      {"SELECT path = '@s', record FROM log WHERE record < 3 AND signal IS NULL ORDER BY record",
       {"1|1", "0|1", "1|2", "0|2"}},
      {"SELECT signal, count(*) FROM log WHERE signal LIKE '%connect_cfm' GROUP BY signal",
       {"mlme_connect_cfm|4"}},
      {"SELECT count(*) FROM log WHERE signal = 'mlme_connect_cfm'", {"4"}},
      {"CREATE VIRTUAL TABLE temp.logs USING udi_log('@s', '@it''s \"a\", (b]')", {}},
      {"SELECT rowid, records, ending FROM logs", {"1|76|complete", "2|75|cut"}},
      {"CREATE VIRTUAL TABLE temp.several USING udi('@text', '@s')", {}},
      {"SELECT path = '@s', count(*) FROM several", {"1|76"}},
      {"CREATE VIRTUAL TABLE temp.endings USING udi_log('@text', '@s')", {}},
      {"SELECT records, bytes, ending FROM endings",
       {"0|0|Bad Magic number detected in log file header. magic:0x6C206F6E", "76|6778|complete"}},
      {"SELECT id, field, kind, json_extract(labels, '$.\"38\"') FROM udi_fields "
       "WHERE hip_version = '14.5.12' AND signal = 'mlme_connect_cfm' LIMIT 2",
       {"8459|vif|integer|", "8459|result_code|label|invalid_parameters"}},
      {"CREATE TABLE names(name); ", {}},
      {"INSERT INTO names VALUES('mlme_connect_cfm'), (NULL), (5)", {}},
      {"SELECT name, record FROM names JOIN udi('@s') ON signal = name",
       {"mlme_connect_cfm|11", "mlme_connect_cfm|65"}},
      {"SELECT n.name, count(record) FROM names n LEFT JOIN udi('@s') ON signal = name GROUP BY 1",
       {"|0", "5|0", "mlme_connect_cfm|2"}},
      // Only statements of the user read files.
      {"CREATE VIEW view AS SELECT * FROM udi('@s')", {}},
      {"SELECT * FROM view", {"unsafe use of virtual table \"udi\""}},
      {"CREATE TEMP VIEW mine AS SELECT * FROM udi('@s') WHERE vif = '1'", {}},
      {"SELECT count(*) FROM mine", {"60"}},
  };
  for (const auto& c : kCases) EXPECT_EQ(Query(c.sql), c.rows) << c.sql;
  // Without a sort.
  EXPECT_EQ(Query("EXPLAIN QUERY PLAN SELECT signal, count(*) FROM log GROUP BY signal").size(),
            1U);
}

// What the table does with a query changes no answer. RANDOM_QUERIES and FIRST_QUERY in the
// environment make others.
TEST_F(Extension, RandomQueries) {
  const auto get_number = [](const char* name, std::uint64_t usual) {
    const char* const text = std::getenv(name);
    return text == nullptr ? usual : std::strtoull(text, nullptr, 10);
  };
  RandomQueries queries(db_, directory_.path());
  const std::uint64_t first = get_number("FIRST_QUERY", 1);
  const std::uint64_t count = get_number("RANDOM_QUERIES", 2000);
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    EXPECT_EQ(queries.Compare(seed), "");
  }
  EXPECT_GT(static_cast<std::uint64_t>(queries.count_with_rows()), count / 3);
}

// What the table does with a condition changes no result.
TEST_F(Extension, ConditionsMeanWhatSqliteSays) {
  std::string log;
  for (const HipVersionTag version : {HipVersionTag::A, HipVersionTag::E, HipVersionTag::L}) {
    log += MakeReferenceLog(version).Unload(0ms).Load(0ms).bytes();
  }
  WriteFile(PathOf("log"), log);
  std::vector<std::string> conditions = {"signal IN ('mlme_connect_cfm', NULL, 'none', 5)",
                                         "signal = 'MLME_CONNECT_CFM' COLLATE NOCASE",
                                         "signal NOT IN ('mlme_connect_cfm')",
                                         "signal = 'ma_unitdata_req' AND id = 4096",
                                         "signal = 'ma_unitdata_req' AND id = 4097",
                                         "signal = 'ma_unitdata_req' OR id = 4352",
                                         "id IN (4096, 8200.0)",
                                         "result_code = 'success' OR vif > 5",
                                         "vif IN (1, 2826)",
                                         "vif < 2826 OR vif > 62709",
                                         "-1 > rssi",
                                         "rssi = -1 OR spare_1 > 4294967294",
                                         "peer_index = vif",
                                         "NOT vif = 1",
                                         "rssi < 0 AND vif > 0",
                                         "request > 100",
                                         "(vif, rssi) > (1, 2)",
                                         "coalesce(vif, 1) = 1",
                                         "hip_version = '14.0.4' AND data = x'0304'",
                                         "key LIKE '%1%'"};
  for (const std::string column : {"signal", "id", "result_code", "vif", "rssi", "response_ms"}) {
    for (const std::string comparison : {"=", "<>", "<", "<=", ">", ">=", "IS", "IS NOT"}) {
      for (const char* value : {"NULL", "-1", "33", "2826", "'2826'", "4096", "4096.5", "70000",
                                "'mlme_connect_cfm'"}) {
        conditions.push_back(column + ' ' + comparison + ' ' + value);
      }
    }
  }
  std::string sums;
  for (const std::string& condition : conditions) sums += ", sum((" + condition + ") IS TRUE)";
  Statement expected(db_, ExpandPaths("SELECT count(*)" + sums + " FROM udi('@log')"));
  ASSERT_TRUE(expected.Step()) << expected.error();
  for (int i = 1; i < expected.CountColumns(); ++i) {
    const std::string& condition = conditions[static_cast<std::size_t>(i) - 1];
    EXPECT_EQ(Query("SELECT count(*) FROM udi('@log') WHERE " + condition), Lines{expected.Get(i)})
        << condition;
  }
}

}  // namespace
