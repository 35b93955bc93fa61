#include "table_base.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

// SQLite passes a module's arguments as they are in the statement, with their quotes.
// Returns a text without its quotes, or nothing if they are wrong. A text that does not
// start with a quote is taken as it is.
std::optional<std::string> Unquote(std::string_view argument) {
  constexpr std::string_view kOpening = "'\"`[";
  constexpr std::string_view kClosing = "'\"`]";
  const std::size_t kind = argument.empty() ? std::string_view::npos : kOpening.find(argument[0]);
  if (kind == std::string_view::npos) return std::string(argument);
  const char quote = kClosing[kind];
  std::string text;
  std::size_t i = 1;
  while (i < argument.size()) {
    if (argument[i] == quote) {
      // Two quotes are one of the text.
      const bool is_doubled = quote != ']' && argument.substr(i + 1, 1) == argument.substr(i, 1);
      if (!is_doubled) break;
      ++i;
    }
    text += argument[i++];
  }
  if (i + 1 != argument.size()) return std::nullopt;
  return text;
}

}  // namespace

int ConnectTable(sqlite3* db, const std::string& declaration, int argc, const char* const* argv,
                 LogTable& table, char** error) {
  constexpr int kFirstArgument = 3;  // after the names of module, database and table
  table.has_fixed_logs = argc > kFirstArgument;
  for (int i = kFirstArgument; i < argc; ++i) {
    std::optional<std::string> path = Unquote(argv[i]);
    if (!path || path->empty()) {
      *error = sqlite3_mprintf("not a path, as in 'session.udi': %s", argv[i]);
      return SQLITE_ERROR;
    }
    table.paths.push_back(std::move(*path));
  }
  int status = sqlite3_declare_vtab(db, declaration.c_str());
  if (status == SQLITE_OK) status = sqlite3_vtab_config(db, SQLITE_VTAB_DIRECTONLY);
  if (status != SQLITE_OK) *error = sqlite3_mprintf("%s", sqlite3_errmsg(db));
  return status;
}

LogRange FindLog(LogTable& table, sqlite3_value* path) {
  const int type = sqlite3_value_type(path);
  if (type == SQLITE_NULL || type == SQLITE_BLOB) return {};
  const std::string_view text = ReadText(path);
  const auto found = std::find(table.paths.begin(), table.paths.end(), text);
  const auto place = static_cast<std::size_t>(found - table.paths.begin());
  if (found == table.paths.end()) {
    if (table.has_fixed_logs) return {};
    table.paths.emplace_back(text);
  }
  return {place, place + 1};
}

std::string_view ReadText(sqlite3_value* value) {
  const void* const text = sqlite3_value_text(value);
  if (text == nullptr) throw std::bad_alloc();
  return {static_cast<const char*>(text), static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

void ReturnText(sqlite3_context* context, std::string_view text) {
  sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

int SetError(sqlite3_vtab& table, const std::string& message) {
  sqlite3_free(table.zErrMsg);
  table.zErrMsg = sqlite3_mprintf("%s", message.c_str());
  return SQLITE_ERROR;
}
