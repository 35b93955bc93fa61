#ifndef VRKT_SQLITE_LOG_ROW_H_
#define VRKT_SQLITE_LOG_ROW_H_

#include <cstdint>
#include <optional>
#include <string>

#include "hip/exchange.h"
#include "hip/hip_versions.h"
#include "hip/record.h"
#include "log/line_stamp.h"
#include "log/log_reader.h"
#include "sqlite_api.h"

// A row of the table udi: a record that prints a line. It borrows the record from the
// reader of the log.
struct LogRow {
  LogItem item;
  const HipVersionEntry* version = nullptr;
  std::uint64_t record = 0;  // counts from 1 in each log

  // What the item is, if a column needed it.
  std::optional<Record> understood;

  // What the record answers. Set only if the query names it.
  std::optional<SentRequest> request;
};

// Returns the layout of the record's id, or null if it is no signal or its version does not
// know the id. It gives the signal's name.
const CompiledSignal* FindLayout(const LogRow& row);

// Returns what the row is.
const Record& Understand(LogRow& row);

// Returns the row's signal if it has fields, that is, if it is known and complete. Null
// otherwise.
const SignalView* ViewFields(LogRow& row);

// Whether the row is a signal that reports a failure.
bool HasFailed(LogRow& row);

// Finds what a new row answers. Every row of the log is needed, in order, also those that the query
// does not ask for.
void TrackExchange(LogRow& row, ExchangeTracker& exchanges);

inline std::int64_t GetTimeMs(const LogRow& row) { return GetExactTime(row.item.time).ToMs(); }

// The memory for making texts, kept for the next row.
struct RowTexts {
  LineStamp stamp;
  std::string long_text;
  std::string path;
  std::string json_path;  // `path`, quoted
};

// Each of these sets the result of a column.
void ReturnStamp(sqlite3_context* context, const LogRow& row, RowTexts& texts);
void ReturnLine(sqlite3_context* context, LogRow& row, RowTexts& texts);
void ReturnJson(sqlite3_context* context, LogRow& row, const std::string& path, RowTexts& texts);
void ReturnFailure(sqlite3_context* context, LogRow& row);
void ReturnDumpBytes(sqlite3_context* context, LogRow& row);
void ReturnField(sqlite3_context* context, LogRow& row, int column, RowTexts& texts);

#endif  // VRKT_SQLITE_LOG_ROW_H_
