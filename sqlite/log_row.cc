#include "log_row.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <span>
#include <string_view>

#include "base/little_endian.h"
#include "columns.h"
#include "fapi/vocabulary.h"
#include "hip/failures.h"
#include "hip/field_rendering.h"
#include "hip/field_value.h"
#include "hip/signal_routing.h"
#include "table_base.h"

namespace {

// The subtype by which SQLite's JSON functions recognise JSON.
constexpr unsigned kJsonSubtype = 'J';

std::string_view RemoveLastCharacter(std::string_view text) {
  return text.substr(0, text.size() - 1);
}

// The text ends with a 0. If SQLite knows that, it saves a second copy.
void ReturnTerminated(sqlite3_context* context, std::string_view text) {
  sqlite3_result_text(context, text.data(), -1, SQLITE_TRANSIENT);
}

// Vocabulary text exists as long as the extension.
void ReturnConstant(sqlite3_context* context, std::string_view text) {
  sqlite3_result_text(context, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}

// A text that is made in parts, the last of which ends with a 0. Most texts have one part.
class PartedText {
 public:
  PartedText(sqlite3_context* context, std::string& previous)
      : context_(context),
        previous_(previous),
        limit_(static_cast<std::size_t>(
            sqlite3_limit(sqlite3_context_db_handle(context), SQLITE_LIMIT_LENGTH, -1))) {
    previous_.clear();
  }

  // Parts of a text that is longer than SQLite allows are dropped.
  void operator()(std::string_view part) {
    if (previous_.size() <= limit_) previous_ += part;
  }

  void Return(std::string_view last_part) {
    if (previous_.empty()) {
      ReturnTerminated(context_, last_part);
      return;
    }
    (*this)(last_part);
    ReturnTerminated(context_, previous_);
    // It can have the size of a record.
    constexpr std::size_t kUsual = std::size_t{1} << 16U;
    if (previous_.capacity() > kUsual) previous_ = std::string();
  }

 private:
  sqlite3_context* context_;
  std::string& previous_;
  std::size_t limit_;
};

// As in [1,2].
void AppendWords(LinePiece& piece, SignalSpan words) {
  for (std::size_t i = 0; i < words.size(); i += 2) {
    piece.Append(i == 0 ? '[' : ',');
    piece.AppendDecimal(LoadU16(words.data() + i));
  }
  piece.Append(']');
}

void AppendQuoted(LinePiece& piece, std::string_view text) {
  piece.Append('"');
  for (const char c : text) {
    if (c == '"' || c == '\\') piece.Append('\\');
    piece.Append(c);
  }
  piece.Append('"');
}

void AppendInteger(LinePiece& piece, std::int64_t number) {
  std::array<char, std::numeric_limits<std::int64_t>::digits10 + 2> digits{};
  const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  piece.Append(std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
}

// Appends the value of any field but a dump.
void AppendJsonValue(LinePiece& piece, const CompiledField& field, const FieldValue& value) {
  switch (value.kind) {
    case FieldValue::Kind::kNumber:
      if (value.number < 0) {
        piece.AppendSigned(static_cast<std::int32_t>(value.number));
      } else {
        piece.AppendDecimal(static_cast<std::uint32_t>(value.number));
      }
      break;
    case FieldValue::Kind::kLabel:
      AppendQuoted(piece, value.label.text());
      break;
    case FieldValue::Kind::kDigits:
      piece.Append('"');
      AppendValue(piece, field, value);
      piece.Append('"');
      break;
    case FieldValue::Kind::kWords:
      AppendWords(piece, value.bytes);
      break;
    case FieldValue::Kind::kBytes:
      break;
  }
}

std::string QuoteForJson(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    constexpr unsigned char kFirstPrintable = 0x20;
    if (static_cast<unsigned char>(c) < kFirstPrintable) {
      LinePiece piece;
      piece.Append("\\u");
      piece.AppendHex(std::uint16_t{static_cast<unsigned char>(c)});
      quoted += piece.text();
      continue;
    }
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

// The longest member: a comma, a name in quotes, a colon, and a label or words.
constexpr std::size_t kMaxJsonField = kPaddedTextSize + 4 + 2 * kMaxValueText;
static_assert(LinePiece::capacity() >= 4 * kMaxJsonField);

// Whether the layout has a field of the same name before this one.
bool IsRepeated(std::span<const CompiledField> fields, const CompiledField& field) {
  if (field.form != FieldRenderer::kDump) return false;
  for (const CompiledField* other = fields.data(); other != &field; ++other) {
    if (other->name.start == field.name.start) return true;
  }
  return false;
}

void AppendJsonFields(LinePiece& piece, const SignalView& signal, PartedText& text) {
  const std::span<const CompiledField> fields = GetFields(*signal.layout);
  for (const CompiledField& field : fields) {
    if (piece.room() < kMaxJsonField) {
      text(piece.text());
      piece.Clear();
    }
    if (IsRepeated(fields, field)) continue;
    piece.Append(",\"");
    piece.Append(GetText(field.name));
    piece.Append("\":");
    if (field.form == FieldRenderer::kDump) {
      piece.Append('"');
      AppendBytes(piece, signal.dump, text);
      piece.Append('"');
    } else {
      AppendJsonValue(piece, field, ReadField(signal, field));
    }
  }
}

}  // namespace

const CompiledSignal* FindLayout(const LogRow& row) {
  const std::uint16_t id = row.item.signal.id;
  if (row.item.kind != LogItem::Kind::kSignal || IsDriverSide(id)) return nullptr;
  return FindSignal(row.version->tag, id);
}

const Record& Understand(LogRow& row) {
  if (!row.understood) row.understood = UnderstandRecord(row.item, *row.version);
  return *row.understood;
}

const SignalView* ViewFields(LogRow& row) {
  if (row.item.kind != LogItem::Kind::kSignal) return nullptr;
  const Record& record = Understand(row);
  return record.kind == Record::Kind::kSignal ? &record.signal : nullptr;
}

void TrackExchange(LogRow& row, ExchangeTracker& exchanges) {
  row.understood.reset();
  row.request.reset();
  if (row.item.IsEvent(DriverEventType::kLoad)) exchanges.ForgetRequests();
  if (const SignalView* const signal = ViewFields(row)) {
    row.request = exchanges.Add(*signal, {row.record, GetTimeMs(row)});
  }
}

bool HasFailed(LogRow& row) {
  const SignalView* const signal = ViewFields(row);
  return signal != nullptr && FindFailure(*signal) != nullptr;
}

void ReturnStamp(sqlite3_context* context, const LogRow& row, RowTexts& texts) {
  ReturnText(context, RemoveLastCharacter(texts.stamp.Format(row.item.time)));
}

void ReturnLine(sqlite3_context* context, LogRow& row, RowTexts& texts) {
  PartedText text(context, texts.long_text);
  LinePiece piece;
  RenderRecord(Understand(row), piece, [&text](std::string_view part) { text(part); });
  piece.Append('\0');
  text.Return(piece.text());
}

void ReturnFailure(sqlite3_context* context, LogRow& row) {
  sqlite3_result_int(context, HasFailed(row) ? 1 : 0);
}

void ReturnDumpBytes(sqlite3_context* context, LogRow& row) {
  const SignalView* const signal = ViewFields(row);
  if (signal == nullptr) return;
  const std::span<const CompiledField> fields = GetFields(*signal->layout);
  const bool has_dump = std::any_of(fields.begin(), fields.end(), [](const CompiledField& field) {
    return field.form == FieldRenderer::kDump;
  });
  if (has_dump) sqlite3_result_int64(context, static_cast<sqlite3_int64>(signal->dump.size()));
}

// The members have the names of the columns. A row without fields has its line instead.
void ReturnJson(sqlite3_context* context, LogRow& row, const std::string& path, RowTexts& texts) {
  PartedText text(context, texts.long_text);
  if (path != texts.path) {
    texts.path = path;
    texts.json_path = QuoteForJson(path);
  }
  LinePiece piece;
  piece.Append(R"({"path":)");
  if (texts.json_path.size() > LinePiece::capacity() / 4) {
    text(piece.text());
    piece.Clear();
    text(texts.json_path);
  } else {
    piece.Append(texts.json_path);
  }
  piece.Append(R"(,"record":)");
  AppendInteger(piece, static_cast<std::int64_t>(row.record));
  piece.Append(R"(,"stamp":")");
  piece.Append(RemoveLastCharacter(texts.stamp.Format(row.item.time)));
  piece.Append(R"(","time_ms":)");
  AppendInteger(piece, GetTimeMs(row));
  piece.Append(R"(,"hip_version":")");
  piece.Append(std::string_view(row.version->name));
  piece.Append('"');
  piece.Append(",\"signal\":");
  if (const CompiledSignal* const layout = FindLayout(row)) {
    piece.Append('"');
    piece.Append(GetText(layout->name));
    piece.Append('"');
  } else {
    piece.Append("null");
  }
  if (const SignalView* const signal = ViewFields(row)) {
    AppendJsonFields(piece, *signal, text);
  } else {
    if (row.item.IsEvent(DriverEventType::kTimeRef)) {
      piece.Append(",\"uptime\":");
      piece.AppendSigned(row.item.uptime);
    }
    piece.Append(",\"line\":");
    AppendQuoted(piece, RenderWithoutFields(Understand(row)));
  }
  piece.Append('}');
  piece.Append('\0');
  text.Return(piece.text());
  sqlite3_result_subtype(context, kJsonSubtype);
}

void ReturnField(sqlite3_context* context, LogRow& row, int column, RowTexts& texts) {
  // Most signals do not have the field, which their id says.
  const CompiledSignal* const layout = FindLayout(row);
  const CompiledField* const field =
      layout == nullptr ? nullptr : Columns::Get().FindField(*layout, column);
  const SignalView* const signal = field == nullptr ? nullptr : ViewFields(row);
  if (signal == nullptr) return;
  const FieldValue value = ReadField(*signal, *field);
  LinePiece piece;
  switch (value.kind) {
    case FieldValue::Kind::kNumber:
      sqlite3_result_int64(context, value.number);
      break;
    case FieldValue::Kind::kLabel:
      ReturnConstant(context, value.label.text());
      break;
    case FieldValue::Kind::kDigits:
      AppendValue(piece, *field, value);
      ReturnText(context, piece.text());
      break;
    case FieldValue::Kind::kWords:
      AppendWords(piece, value.bytes);
      ReturnText(context, piece.text());
      sqlite3_result_subtype(context, kJsonSubtype);
      break;
    case FieldValue::Kind::kBytes: {
      PartedText text(context, texts.long_text);
      AppendBytes(piece, value.bytes, text);
      piece.Append('\0');
      text.Return(piece.text());
      break;
    }
  }
}
