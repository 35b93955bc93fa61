// The table udi: a row per record that prints a line.
//
// A record that is not asked for costs little more than its reading, because the table
// skips it before SQLite sees it. It uses constraints on `signal` and `id`, comparisons of a
// number with a field, and that a comparison with a field is never true for a signal
// without this field. SQLite still checks all constraints (they are not marked to be omitted). So
// the table may use only those whose meaning it knows, and it can return a row that does not match.
// It does that now and then, because SQLite looks for an interrupt only between rows.
//
// A constraint may be used only if the plan takes its value (argvIndex): SQLite then knows that
// the scan depends on it. Otherwise it uses the scan also where the constraint must not hold,
// as for the left table of `log LEFT JOIN t ON log.vif = 1`. For that table it also passes `<>`
// and IS NOT NULL as usable, and forgets that they depend on t. So these are never used.
//
// For GROUP BY signal, SQLite sorts all rows, which takes longer than all else. If the query
// names no other column, as to count signals, rows of a signal are the same to SQLite. The
// table then reads the log, counts, and gives the rows in the order of their signals. An
// interrupt ends such a query after the reading. SQLite does not say whether a query names the
// rowid, so columns with its names hide it.
//
// A log joined with itself is read once per row of the outer log, because SQLite makes no
// index for a virtual table. The costs are chosen so that SQLite reads a log once wherever
// the query allows it.

#include "udi_table.h"

#include <algorithm>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "columns.h"
#include "fapi/vocabulary.h"
#include "hip/exchange.h"
#include "hip/field_value.h"
#include "hip/signal_routing.h"
#include "log_row.h"
#include "open_log.h"
#include "table_base.h"

namespace {

// What a plan uses, from BestIndex to Filter. The values that Filter gets are in the order
// of the first three. Those of the comparisons follow.
enum PlanFlag : int {
  kUsesPath = 1,
  kUsesSignal = 2,
  kUsesId = 4,
  kSignalIsList = 8,  // as in signal IN (...)
  kIdIsList = 16,
  kNeedsRequests = 32,
  kIsGrouped = 64,  // by signal; see above
  kDescends = 128,
};

using LayoutSet = std::vector<bool>;
using IdSet = std::bitset<0x10000>;

// A comparison of a field with a number.
struct Comparison {
  int column;
  int op;  // SQLITE_INDEX_CONSTRAINT_EQ and so on
  std::int64_t number;
};

struct SignalCount {
  const CompiledSignal* layout;  // null for rows without a signal
  std::int64_t rows;
};

constexpr std::int64_t kRowsBetweenInterrupts = 10000;  // about a millisecond

// Reads the logs of one scan, and keeps the row that SQLite sees.
struct Scan {
  LogRange logs;
  std::unique_ptr<OpenLog> log;  // null after the last log
  std::size_t log_index = 0;     // of `log`
  LogRow row;
  RowTexts texts;

  // What can match: layouts, by index, and ids. None means all, and also what is no signal.
  std::optional<LayoutSet> layouts;
  std::optional<IdSet> ids;
  // The ids of both in this version.
  const HipVersionEntry* version = nullptr;
  std::optional<IdSet> wanted;
  bool only_answers = false;  // signals that answer one
  std::vector<Comparison> comparisons;

  // Of a grouped scan: the signals in their order, and the current row.
  bool is_grouped = false;
  std::vector<SignalCount> groups;
  std::size_t group = 0;
  std::int64_t row_of_group = 0;

  std::unique_ptr<ExchangeTracker> exchanges;  // null if the query does not need it
};

struct Cursor {
  sqlite3_vtab_cursor base;  // first, because SQLite has a pointer to it
  Scan* scan;
};

Scan& GetScan(sqlite3_vtab_cursor* cursor) { return *reinterpret_cast<Cursor*>(cursor)->scan; }

// --- Planning ---

bool IsBinary(sqlite3_index_info* info, int constraint) {
  return std::string_view(sqlite3_vtab_collation(info, constraint)) == "BINARY";
}

// Whether SQLite has sqlite3_vtab_in and sqlite3_vtab_distinct. Without the first, it reads
// the log once per value of `column IN (...)`, and does not say so.
bool HasNewPlanner() {
  return SQLITE_VERSION_NUMBER >= 3038000 && sqlite3_libversion_number() >= 3038000;
}

// Returns whether the constraint is a list, and asks for all of its values at once.
bool TakeList([[maybe_unused]] sqlite3_index_info* info, [[maybe_unused]] int constraint) {
#if SQLITE_VERSION_NUMBER >= 3038000
  return sqlite3_vtab_in(info, constraint, 1) != 0;
#else
  return false;
#endif
}

// The constraints that the table can use, by index, or -1.
struct Constraints {
  int path = -1;
  int signal = -1;
  int id = -1;
  bool path_is_unusable = false;
};

Constraints FindConstraints(sqlite3_index_info* info) {
  Constraints found;
  for (int i = 0; i < info->nConstraint; ++i) {
    const auto& constraint = info->aConstraint[i];
    if (constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) continue;
    if (constraint.iColumn == kPath && constraint.usable == 0) found.path_is_unusable = true;
    if (constraint.usable == 0) continue;
    if (constraint.iColumn == kPath) found.path = i;
    if (constraint.iColumn == kSignal && HasNewPlanner() && IsBinary(info, i)) found.signal = i;
    if (constraint.iColumn == kId && HasNewPlanner()) found.id = i;
  }
  return found;
}

bool IsOrderedByRecord(const sqlite3_index_info* info) {
  return info->nOrderBy > 0 && info->aOrderBy[0].iColumn == kRecord && info->aOrderBy[0].desc == 0;
}

bool IsComparison(int op) {
  return op == SQLITE_INDEX_CONSTRAINT_EQ || op == SQLITE_INDEX_CONSTRAINT_GT ||
         op == SQLITE_INDEX_CONSTRAINT_LE || op == SQLITE_INDEX_CONSTRAINT_LT ||
         op == SQLITE_INDEX_CONSTRAINT_GE;
}

// The columns whose comparisons select rows.
bool IsComparable(int column) {
  return column == kRequest || column == kResponseMs || column >= kFirstField;
}

// Asks for the values of comparisons with fields and answers. Returns their columns and operators,
// as numbers with a blank after each. A list, as in vif IN (...), is left to SQLite, which would
// read the log once per value.
std::string TakeComparisons([[maybe_unused]] sqlite3_index_info* info,
                            [[maybe_unused]] int& values) {
  std::string taken;
#if SQLITE_VERSION_NUMBER >= 3038000
  for (int i = 0; HasNewPlanner() && i < info->nConstraint; ++i) {
    const auto& constraint = info->aConstraint[i];
    if (constraint.usable == 0 || !IsComparable(constraint.iColumn)) continue;
    if (!IsComparison(constraint.op) || sqlite3_vtab_in(info, i, -1) != 0) continue;
    info->aConstraintUsage[i].argvIndex = ++values;
    taken += std::to_string(constraint.iColumn) + ' ' + std::to_string(constraint.op) + ' ';
  }
#endif
  return taken;
}

constexpr std::uint64_t GetUseBit(Column column) { return std::uint64_t{1} << column; }

// Whether the table can group the rows by signal, see above. `path` is the same in all rows
// of a table-valued function.
bool IsGroupedBySignal([[maybe_unused]] sqlite3_index_info* info,
                       [[maybe_unused]] bool has_one_path) {
#if SQLITE_VERSION_NUMBER >= 3038000
  constexpr int kGroupBy = 1;
  const std::uint64_t needed = info->colUsed & ~(has_one_path ? GetUseBit(kPath) : 0);
  return HasNewPlanner() && sqlite3_vtab_distinct(info) == kGroupBy && info->nOrderBy == 1 &&
         info->aOrderBy[0].iColumn == kSignal && needed == GetUseBit(kSignal);
#else
  return false;
#endif
}

// A scan with constraints reads the whole log, too. Two of them for the two sides of an OR
// must cost more than one without.
void EstimateCost(const LogTable& table, const Constraints& found, sqlite3_index_info* info) {
  const double logs = !table.has_fixed_logs ? 1 : static_cast<double>(table.paths.size());
  const bool is_selective = found.signal >= 0 || found.id >= 0;
  info->estimatedCost = logs * (is_selective ? 9e6 : 1e7);
  info->estimatedRows = static_cast<sqlite3_int64>(logs * (is_selective ? 2e4 : 1e6));
  // Without a path, this is the query's error, or it is one side of an OR, for which SQLite
  // must choose another plan. Filter reports the error.
  if (!table.has_fixed_logs && found.path < 0) info->estimatedCost = 1e99;
}

int MakePlan(sqlite3_vtab* base, sqlite3_index_info* info) {
  const LogTable& table = GetTable(base);
  const Constraints found = FindConstraints(info);
  int values = 0;
  int plan = 0;
  if (!table.has_fixed_logs) {
    if (found.path < 0 && found.path_is_unusable) return SQLITE_CONSTRAINT;
    if (found.path >= 0) {
      info->aConstraintUsage[found.path] = {++values, 1};
      plan |= kUsesPath;
    }
  }
  if (found.signal >= 0) {
    info->aConstraintUsage[found.signal].argvIndex = ++values;
    plan |= kUsesSignal | (TakeList(info, found.signal) ? kSignalIsList : 0);
  }
  if (found.id >= 0) {
    info->aConstraintUsage[found.id].argvIndex = ++values;
    plan |= kUsesId | (TakeList(info, found.id) ? kIdIsList : 0);
  }
  if ((info->colUsed & (GetUseBit(kRequest) | GetUseBit(kResponseMs))) != 0) plan |= kNeedsRequests;
  const bool is_grouped = IsGroupedBySignal(info, !table.has_fixed_logs);
  if (is_grouped) plan |= kIsGrouped | (info->aOrderBy[0].desc != 0 ? kDescends : 0);
  info->idxNum = plan;
  const std::string comparisons = TakeComparisons(info, values);
  info->idxStr = sqlite3_mprintf("%s", comparisons.c_str());
  if (info->idxStr == nullptr) return SQLITE_NOMEM;
  info->needToFreeIdxStr = 1;

  EstimateCost(table, found, info);
  // Records of several logs are in order within each log only.
  const bool is_one_log = !table.has_fixed_logs || table.paths.size() == 1;
  info->orderByConsumed = is_grouped || (is_one_log && IsOrderedByRecord(info)) ? 1 : 0;
  return SQLITE_OK;
}

int BestIndex(sqlite3_vtab* base, sqlite3_index_info* info) {
  return CatchNoMemory([&] { return MakePlan(base, info); });
}

// --- Reading ---

// What the constraints select becomes a set of ids, which takes one look-up per record.
void SelectIdsOfVersion(Scan& scan) {
  scan.version = scan.row.version;
  if (!scan.layouts) {
    scan.wanted = scan.ids;
    return;
  }
  scan.wanted.emplace();
  for (const KnownSignal& signal : ListSignals(scan.version->tag)) {
    const auto layout = static_cast<std::size_t>(signal.layout - ListLayouts().data());
    const bool is_wanted = (*scan.layouts)[layout] && (!scan.ids || scan.ids->test(signal.id));
    if (is_wanted && !IsDriverSide(signal.id)) scan.wanted->set(signal.id);
  }
}

// Whether the comparison can be true. SQLite compares what is no number.
bool CanBeTrue(const Comparison& comparison, const SignalView& signal) {
  const CompiledField* const field = Columns::Get().FindField(*signal.layout, comparison.column);
  if (field == nullptr) return false;
  const FieldValue value = ReadField(signal, *field);
  if (value.kind != FieldValue::Kind::kNumber) return true;
  switch (comparison.op) {
    case SQLITE_INDEX_CONSTRAINT_EQ:
      return value.number == comparison.number;
    case SQLITE_INDEX_CONSTRAINT_LT:
      return value.number < comparison.number;
    case SQLITE_INDEX_CONSTRAINT_LE:
      return value.number <= comparison.number;
    case SQLITE_INDEX_CONSTRAINT_GT:
      return value.number > comparison.number;
    default:
      return value.number >= comparison.number;
  }
}

bool Matches(Scan& scan) {
  LogRow& row = scan.row;
  if (scan.only_answers && !row.request) return false;
  if (scan.wanted &&
      (row.item.kind != LogItem::Kind::kSignal || !scan.wanted->test(row.item.signal.id))) {
    return false;
  }
  if (scan.comparisons.empty()) return true;
  const SignalView* const signal = ViewFields(row);
  return signal != nullptr && std::all_of(scan.comparisons.begin(), scan.comparisons.end(),
                                          [signal](const Comparison& comparison) {
                                            return CanBeTrue(comparison, *signal);
                                          });
}

// Every record is needed, also those that the query does not ask for.
void TrackExchanges(Scan& scan) {
  LogRow& row = scan.row;
  row.request.reset();
  if (row.item.IsEvent(DriverEventType::kLoad)) scan.exchanges->ForgetRequests();
  if (const SignalView* const signal = ViewFields(row)) {
    row.request = scan.exchanges->Add(*signal, {row.record, GetTimeMs(row)});
  }
}

// Reads the next record of the open log. Returns false at its end.
bool ReadRecord(Scan& scan) {
  LogRow& row = scan.row;
  do {
    if (!scan.log->Read(row.item)) return false;
  } while (!row.item.HasLine());
  row.version = &scan.log->reader().version();
  if (row.version != scan.version) SelectIdsOfVersion(scan);
  row.understood.reset();
  ++row.record;
  if (scan.exchanges != nullptr) TrackExchanges(scan);
  return true;
}

// Opens the next log. After the last one, `log` is null.
int OpenNextLog(Scan& scan, sqlite3_vtab& table) {
  scan.log.reset();
  scan.row.record = 0;
  if (scan.logs.next == scan.logs.end) return SQLITE_OK;
  if (scan.exchanges != nullptr) scan.exchanges->ForgetRequests();
  scan.log_index = scan.logs.next++;
  std::string error;
  const LogTable& logs = GetTable(&table);
  scan.log = OpenLog::Open(logs.paths[scan.log_index], logs.has_fixed_logs, error);
  return scan.log == nullptr ? SetError(table, error) : SQLITE_OK;
}

// Reads up to a row that matches, or up to the last of `limit` rows.
int ReadRow(Scan& scan, sqlite3_vtab& table, std::int64_t limit) {
  while (scan.log != nullptr) {
    if (ReadRecord(scan)) {
      if (Matches(scan) || --limit == 0) return SQLITE_OK;
    } else if (const int status = OpenNextLog(scan, table); status != SQLITE_OK) {
      return status;
    }
  }
  return SQLITE_OK;
}

// Reads all logs of a grouped scan.
int ReadGroups(Scan& scan, sqlite3_vtab& table, bool descends) {
  constexpr std::int64_t kNoLimit = 0;
  const std::span<const CompiledSignal> layouts = ListLayouts();
  scan.groups.push_back({nullptr, 0});
  for (const CompiledSignal& layout : layouts) scan.groups.push_back({&layout, 0});
  for (;;) {
    const int status = ReadRow(scan, table, kNoLimit);
    if (status != SQLITE_OK) return status;
    if (scan.log == nullptr) break;
    const CompiledSignal* const layout = FindLayout(scan.row);
    ++scan.groups[layout == nullptr ? 0 : static_cast<std::size_t>(layout - layouts.data()) + 1]
          .rows;
  }
  std::erase_if(scan.groups, [](const SignalCount& group) { return group.rows == 0; });
  // NULL is less than all texts.
  const auto get_name = [](const SignalCount& group) {
    return group.layout == nullptr ? std::string_view() : GetText(group.layout->name).text();
  };
  std::sort(scan.groups.begin(), scan.groups.end(),
            [&](const SignalCount& left, const SignalCount& right) {
              return get_name(left) < get_name(right);
            });
  if (descends) std::reverse(scan.groups.begin(), scan.groups.end());
  return SQLITE_OK;
}

void MoveInGroups(Scan& scan) {
  if (++scan.row_of_group < scan.groups[scan.group].rows) return;
  ++scan.group;
  scan.row_of_group = 0;
}

const CompiledSignal* FindSignalOfRow(const Scan& scan) {
  return scan.is_grouped ? scan.groups[scan.group].layout : FindLayout(scan.row);
}

int Open(sqlite3_vtab* /*table*/, sqlite3_vtab_cursor** cursor) {
  return CatchNoMemory([&] {
    auto scan = std::make_unique<Scan>();
    auto made = std::make_unique<Cursor>();
    made->scan = scan.release();
    *cursor = &made.release()->base;
    return SQLITE_OK;
  });
}

int Close(sqlite3_vtab_cursor* cursor) {
  delete &GetScan(cursor);
  delete reinterpret_cast<Cursor*>(cursor);
  return SQLITE_OK;
}

// Calls `take` with each value of a constraint. Stops if it returns false.
template <typename Take>
void ForEachValue(sqlite3_value* constraint, [[maybe_unused]] bool is_list, Take take) {
#if SQLITE_VERSION_NUMBER >= 3038000
  if (is_list) {
    sqlite3_value* value = nullptr;
    for (int status = sqlite3_vtab_in_first(constraint, &value);
         status == SQLITE_OK && value != nullptr && take(value);
         status = sqlite3_vtab_in_next(constraint, &value)) {
    }
    return;
  }
#endif
  take(constraint);
}

// These two use only values of the usual type. With others, SQLite checks the constraint
// alone.
std::optional<LayoutSet> SelectLayouts(sqlite3_value* constraint, bool is_list) {
  const std::span<const CompiledSignal> all = ListLayouts();
  std::optional<LayoutSet> layouts(all.size());
  ForEachValue(constraint, is_list, [&](sqlite3_value* value) {
    if (sqlite3_value_type(value) != SQLITE_TEXT) {
      layouts.reset();
      return false;
    }
    const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    if (text == nullptr) throw std::bad_alloc();
    const std::string_view name(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (GetText(all[i].name).text() == name) (*layouts)[i] = true;
    }
    return true;
  });
  return layouts;
}

std::optional<IdSet> SelectIds(sqlite3_value* constraint, bool is_list) {
  std::optional<IdSet> ids(std::in_place);
  ForEachValue(constraint, is_list, [&ids](sqlite3_value* value) {
    if (sqlite3_value_type(value) != SQLITE_INTEGER) {
      ids.reset();
      return false;
    }
    const sqlite3_int64 id = sqlite3_value_int64(value);
    if (id >= 0 && id <= 0xFFFF) ids->set(static_cast<std::size_t>(id));
    return true;
  });
  return ids;
}

// Skips rows in which the column is NULL.
void SkipNulls(Scan& scan, int column) {
  if (column < kFirstField) {
    scan.only_answers = true;
    return;
  }
  const std::span<const CompiledSignal> all = ListLayouts();
  if (!scan.layouts) scan.layouts.emplace(all.size(), true);
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (Columns::Get().FindField(all[i], column) == nullptr) (*scan.layouts)[i] = false;
  }
}

// The column and operator of each comparison are in the plan, its value in `values`. No
// comparison with NULL is true.
void SelectComparisons(Scan& scan, const char* plan, sqlite3_value** values) {
  char* next = nullptr;
  while (*plan != '\0') {
    const auto column = static_cast<int>(std::strtol(plan, &next, 10));
    const auto op = static_cast<int>(std::strtol(next + 1, &next, 10));
    plan = next + 1;
    sqlite3_value* const value = *values++;
    SkipNulls(scan, column);
    if (column < kFirstField || sqlite3_value_type(value) != SQLITE_INTEGER) continue;
    scan.comparisons.push_back({column, op, sqlite3_value_int64(value)});
  }
}

int Filter(sqlite3_vtab_cursor* cursor, int plan, const char* comparisons, int /*argc*/,
           sqlite3_value** argv) {
  return CatchNoMemory([&] {
    Scan& scan = GetScan(cursor);
    LogTable& table = GetTable(cursor->pVtab);
    scan = Scan();
    if ((plan & kUsesPath) != 0) {
      scan.logs = FindLog(table, *argv++);
    } else if (table.has_fixed_logs) {
      scan.logs = {0, table.paths.size()};
    } else {
      return SetError(*cursor->pVtab, "udi needs a path, as in udi('session.udi')");
    }
    if ((plan & kUsesSignal) != 0) {
      scan.layouts = SelectLayouts(*argv++, (plan & kSignalIsList) != 0);
    }
    if ((plan & kUsesId) != 0) scan.ids = SelectIds(*argv++, (plan & kIdIsList) != 0);
    if ((plan & kNeedsRequests) != 0) scan.exchanges = std::make_unique<ExchangeTracker>();
    SelectComparisons(scan, comparisons, argv);
    const int status = OpenNextLog(scan, *cursor->pVtab);
    if (status != SQLITE_OK) return status;
    scan.is_grouped = (plan & kIsGrouped) != 0;
    if (scan.is_grouped) return ReadGroups(scan, *cursor->pVtab, (plan & kDescends) != 0);
    return ReadRow(scan, *cursor->pVtab, kRowsBetweenInterrupts);
  });
}

int Next(sqlite3_vtab_cursor* cursor) {
  Scan& scan = GetScan(cursor);
  if (scan.is_grouped) {
    MoveInGroups(scan);
    return SQLITE_OK;
  }
  return CatchNoMemory([&] { return ReadRow(scan, *cursor->pVtab, kRowsBetweenInterrupts); });
}

int IsAtEnd(sqlite3_vtab_cursor* cursor) {
  const Scan& scan = GetScan(cursor);
  const bool is_at_end = scan.is_grouped ? scan.group == scan.groups.size() : scan.log == nullptr;
  return is_at_end ? 1 : 0;
}

// The same in all scans: to evaluate an OR, SQLite can scan a table twice, and takes rows with
// the same rowid for one.
std::int64_t MakeRowid(const Scan& scan) {
  constexpr unsigned kRecordBits = 40;
  return static_cast<std::int64_t>(std::uint64_t{scan.log_index} << kRecordBits | scan.row.record);
}

int GetRowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* rowid) {
  *rowid = MakeRowid(GetScan(cursor));
  return SQLITE_OK;
}

// --- Columns ---

void ReturnColumn(sqlite3_context* context, const LogTable& table, Scan& scan, int column) {
  LogRow& row = scan.row;
  switch (column) {
    case kRecord:
      sqlite3_result_int64(context, static_cast<sqlite3_int64>(row.record));
      break;
    case kStamp:
      ReturnStamp(context, row, scan.texts);
      break;
    case kTimeMs:
      sqlite3_result_int64(context, GetTimeMs(row));
      break;
    case kSignal:
      if (const CompiledSignal* const layout = FindSignalOfRow(scan)) {
        const PaddedText name = GetText(layout->name);
        sqlite3_result_text(context, name.data, static_cast<int>(name.size), SQLITE_STATIC);
      }
      break;
    case kLine:
      ReturnLine(context, row, scan.texts);
      break;
    case kPath:
      sqlite3_result_text(context, table.paths[scan.log_index].c_str(), -1, SQLITE_TRANSIENT);
      break;
    case kId:
      if (row.item.kind == LogItem::Kind::kSignal) sqlite3_result_int(context, row.item.signal.id);
      break;
    case kHipVersion:
      sqlite3_result_text(context, row.version->name, -1, SQLITE_STATIC);
      break;
    case kUptime:
      if (row.item.IsEvent(DriverEventType::kTimeRef)) {
        sqlite3_result_int(context, row.item.uptime);
      }
      break;
    case kRequest:
      if (row.request) {
        sqlite3_result_int64(context, static_cast<sqlite3_int64>(row.request->record));
      }
      break;
    case kResponseMs:
      if (row.request) sqlite3_result_int64(context, GetTimeMs(row) - row.request->time_ms);
      break;
    case kJson:
      ReturnJson(context, row, scan.texts);
      break;
    case kRowid:
    case kOid:
    case kUnderscoreRowid:
      sqlite3_result_int64(context, MakeRowid(scan));
      break;
    default:
      ReturnField(context, row, column);
      break;
  }
}

// A column that returns nothing is NULL.
int ReadColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
  return CatchNoMemory([&] {
    ReturnColumn(context, GetTable(cursor->pVtab), GetScan(cursor), column);
    return SQLITE_OK;
  });
}

int Connect(sqlite3* db, void* /*unused*/, int argc, const char* const* argv, sqlite3_vtab** table,
            char** error) {
  return CatchNoMemory(
      [&] { return ConnectTable(db, Columns::Get().declaration(), argc, argv, table, error); });
}

}  // namespace

constexpr sqlite3_module kUdiModule = [] {
  sqlite3_module module{};
  module.xCreate = Connect;  // equals xConnect, which makes it a table-valued function, too
  module.xConnect = Connect;
  module.xBestIndex = BestIndex;
  module.xDisconnect = DisconnectTable;
  module.xDestroy = DisconnectTable;
  module.xOpen = Open;
  module.xClose = Close;
  module.xFilter = Filter;
  module.xNext = Next;
  module.xEof = IsAtEnd;
  module.xColumn = ReadColumn;
  module.xRowid = GetRowid;
  return module;
}();
