// Prints the vocabulary and the rules of the log as a Lua table, the beginning of the Wireshark
// plugin: a new row, label, event or version needs no change in the plugin's logic. Layouts and
// labels are texts, which the logic reads where it needs them: a table for each field
// would be ten times as much for Lua to load and to keep.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

#include "fapi/compiled_signal.h"
#include "fapi/field_forms.h"
#include "fapi/hip_version_tags.h"
#include "fapi/vocabulary.h"
#include "field_descriptions.h"
#include "hip/driver_events.h"
#include "hip/exchange_rules.h"
#include "hip/failures.h"
#include "hip/field_rendering.h"
#include "hip/hip_versions.h"
#include "hip/record.h"
#include "hip/signal_routing.h"
#include "log/log_text.h"

namespace {

[[noreturn]] void Fail(const std::string& message) {
  std::fprintf(stderr, "%s\n", message.c_str());
  std::exit(1);
}

const char* GetBool(bool value) { return value ? "true" : "false"; }

std::string GetString(TextRange range) { return std::string(GetText(range).text()); }

void WriteVersions() {
  std::printf("  versions = {\n");
  for (const HipVersionEntry& entry : HipVersionTable) {
    std::printf("    {name = \"%s\", packed = 0x%08X, unlabelled_has_blank = %s},\n", entry.name,
                static_cast<unsigned>(entry.version), GetBool(HasBlankBeforeUnlabelled(entry.tag)));
  }
  std::printf("  },\n");
}

void WriteLog() {
  std::printf(
      "  log = {header_magic = 0x%08X, format_version = %u, event_magic = 0x%08X,\n"
      "    signal_magic = 0x%08X, first_hip_id = 0x%04X, last_hip_id = 0x%04X},\n",
      kHeaderMagic, kLogFormatVersion, kDriverEventMagic, kSignalRecordMagic, kFirstHipId,
      kLastHipId);
}

// Removes the digits of an id that is zero.
std::string RenderWithoutId(Record::Kind kind) {
  constexpr std::uint8_t kNoBytes[kMaxSignalEnd] = {};
  Record record{.kind = kind};
  record.signal.bytes = kNoBytes;
  const std::string text = RenderWithoutFields(record);
  return text.substr(0, text.size() - 4);
}

// The lines of signals without fields, and the end of most lines with fields.
void WriteTexts() {
  std::printf(
      "  texts = {unknown_signal = \"%s%%04x\", unknown_driver_signal = \"%s%%04x\",\n"
      "    invalid_length = \"%s\", zero_spares = \"%s\"},\n",
      RenderWithoutId(Record::Kind::kUnknownSignal).c_str(),
      RenderWithoutId(Record::Kind::kUnknownDriverSignal).c_str(),
      RenderWithoutFields({.kind = Record::Kind::kInvalidLength}).c_str(), kZeroSpares.data());
}

// The events with the names of their types, and the reports of a log's end. A report has one line
// here.
void WriteEventsAndEnds() {
  const auto write_end = [](const LogEnd& end, const char* name) {
    std::string pattern = GetLogEndPattern(end);
    std::replace(pattern.begin(), pattern.end(), '\n', ' ');
    std::printf("%s = \"%s\"", name, pattern.c_str());
  };
  std::printf("  event_types = {time_ref = %u, load = %u, unload = %u},\n  events = {\n",
              static_cast<unsigned>(DriverEventType::kTimeRef),
              static_cast<unsigned>(DriverEventType::kLoad),
              static_cast<unsigned>(DriverEventType::kUnload));
  for (const DriverEvent& event : kDriverEvents) {
    std::printf("    {type = %u, size = %u, text = \"%s\", text_after_uptime = \"%s\",\n      ",
                static_cast<unsigned>(event.type), event.size, event.text.data(),
                event.text_after_uptime.data());
    write_end({LogEnd::Kind::kBadEventSize, 0, &event}, "wrong_size");
    std::printf("},\n");
  }
  std::printf("  },\n  log_ends = {\n");
  constexpr struct {
    LogEnd::Kind kind;
    const char* name;
  } kEnds[] = {
      {LogEnd::Kind::kBadMagic, "bad_magic"},
      {LogEnd::Kind::kOldFormat, "old_format"},
      {LogEnd::Kind::kBadHeaderMagic, "bad_header_magic"},
      {LogEnd::Kind::kNewFormat, "new_format"},
      {LogEnd::Kind::kUnknownHipVersion, "unknown_hip_version"},
  };
  for (const auto& [kind, name] : kEnds) {
    std::printf("    ");
    write_end({kind}, name);
    std::printf(",\n");
  }
  std::printf("  },\n");
}

// What a filter field of Wireshark holds.
struct FieldType {
  enum class Kind : std::uint8_t { kUnsigned, kSigned, kAddress, kBytes };
  Kind kind;
  int size;  // in bytes, of a number
  bool is_hex;
  bool has_labels;
};

FieldType GetType(FieldRenderer form) {
  using Kind = FieldType::Kind;
  const int size = GetForm(form).width;
  switch (form) {
    case FieldRenderer::kU8:
    case FieldRenderer::kU16:
    case FieldRenderer::kU32:
      return {Kind::kUnsigned, size, false, false};
    case FieldRenderer::kI16:
    case FieldRenderer::kI32:
      return {Kind::kSigned, size, false, false};
    case FieldRenderer::kX16:
    case FieldRenderer::kX16NoSpace:
    case FieldRenderer::kX32:
    case FieldRenderer::kHex8:
    case FieldRenderer::kWords:
      return {Kind::kUnsigned, size, true, false};
    case FieldRenderer::kEnum16:
      return {Kind::kUnsigned, size, false, true};
    case FieldRenderer::kMac:
      return {Kind::kAddress, size, false, false};
    case FieldRenderer::kDump:
      return {Kind::kBytes, size, false, false};
  }
  std::abort();
}

// What reads a form in the plugin.
const char* GetReader(FieldRenderer form) {
  switch (form) {
    case FieldRenderer::kMac:
      return "mac";
    case FieldRenderer::kHex8:
      return "digits";
    case FieldRenderer::kWords:
      return "words";
    default:
      return "number";
  }
}

void WriteForms() {
  std::printf("  forms = {\n");
  for (const FieldForm& form : kFieldForms) {
    const FieldType type = GetType(form.form);
    std::printf(
        "    %s = {reader = \"%s\", width = %d, is_signed = %s, is_hex = %s, has_labels = %s,\n"
        "      has_blank = %s, before = \"%s\", after = \"%s\"},\n",
        form.name, GetReader(form.form), form.width, GetBool(type.kind == FieldType::Kind::kSigned),
        GetBool(type.is_hex), GetBool(type.has_labels), GetBool(form.has_blank), form.before_value,
        form.after_value);
  }
  std::printf("  },\n");
}

// The types by the names of the fields. In Wireshark a name has one type: where the numbers
// of a name have several sizes, the largest.
std::map<std::string, FieldType> ListFieldTypes() {
  std::map<std::string, FieldType> types;
  for (const CompiledSignal& signal : ListLayouts()) {
    for (const CompiledField& field : GetFields(signal)) {
      const std::string name = GetString(field.name);
      const FieldType type = GetType(field.form);
      FieldType& merged = types.try_emplace(name, type).first->second;
      if (merged.kind != type.kind) {
        Fail("The fields \"" + name + "\" have types that no field of Wireshark can hold together");
      }
      merged.size = std::max(merged.size, type.size);
      merged.is_hex = merged.is_hex && type.is_hex;
      merged.has_labels = merged.has_labels || type.has_labels;
    }
  }
  return types;
}

std::string GetTypeName(const FieldType& type) {
  switch (type.kind) {
    case FieldType::Kind::kUnsigned:
      return "uint" + std::to_string(8 * type.size);
    case FieldType::Kind::kSigned:
      return "int" + std::to_string(8 * type.size);
    case FieldType::Kind::kAddress:
      return "ether";
    case FieldType::Kind::kBytes:
      return "bytes";
  }
  std::abort();
}

const char* FindDescription(const std::string& name) {
  for (const FieldDescription& description : kFieldDescriptions) {
    if (name == description.name) return description.text;
  }
  return nullptr;
}

// The filter fields of the signals. The type is the name of Wireshark's constructor.
void WriteFields() {
  std::printf("  fields = {\n");
  for (const auto& [name, type] : ListFieldTypes()) {
    std::printf(R"(    {name = "%s", type = "%s")", name.c_str(), GetTypeName(type).c_str());
    if (type.is_hex) std::printf(", is_hex = true");
    if (type.has_labels) std::printf(", has_labels = true");
    if (const char* const text = FindDescription(name)) {
      std::printf(R"(, description = "%s")", text);
    }
    std::printf("},\n");
  }
  std::printf("  },\n");
}

// The argument of a field's form: how many words, or which enumeration.
int FormArgument(const CompiledField& field) {
  if (field.form == FieldRenderer::kWords) return field.words;
  return field.form == FieldRenderer::kEnum16 ? field.enum_index : 0;
}

// By kind: the field that says it, and what it shows on success.
void WriteFailures() {
  std::printf("  failures = {\n");
  for (const FailureRule& rule : kFailureRules) {
    std::printf("    %s = {field = \"%s\", success = \"%s\"},\n", rule.kind.data(),
                rule.field.data(), rule.success.data());
  }
  std::printf("  },\n");
}

// A layout as "NAME MIN FAILURE SPARES|NAME FORM OFFSET ARGUMENT|...", with the kind of failure
// that the signal can report, or "-", and whether it ends in the spares. The dumps come first, as
// they are printed.
void WriteLayouts() {
  std::printf("  layouts = {\n");
  for (const CompiledSignal& signal : ListLayouts()) {
    const FailureRule* const failure = FindFailureField(signal).rule;
    std::printf("    \"%s %d %s %s", GetString(signal.name).c_str(), signal.min,
                failure == nullptr ? "-" : failure->kind.data(), GetBool(signal.ends_in_spares));
    for (const CompiledField& field : GetFields(signal)) {
      std::printf("|%s %s %d %d", GetString(field.name).c_str(), GetForm(field.form).name,
                  field.offset, FormArgument(field));
    }
    std::printf("\",\n");
  }
  std::printf("  },\n");
}

// The enumerations that fields use, by index. A label is a line "VALUE VERSIONS
// TEXT", with the versions by their letters.
void WriteEnumerations() {
  std::printf("  enumerations = {\n");
  for (std::size_t index = 0; index < CountEnumerations(); ++index) {
    std::printf("    [%zu] = [[\n", index);
    for (const CompiledLabel& label : ListLabels(index)) {
      std::printf("%04X ", label.value);
      for (const HipVersionEntry& version : HipVersionTable) {
        if (label.versions.Contains(version.tag)) std::putchar(GetLetter(version.tag));
      }
      std::printf(" %s\n", GetString(label.text).c_str());
    }
    std::printf("]],\n");
  }
  std::printf("  },\n");
}

// The signals of each version, as "ID:LAYOUT" with the layout's number, from 1.
void WriteSignals() {
  std::printf("  signals = {\n");
  for (const HipVersionEntry& version : HipVersionTable) {
    std::printf("    \"");
    for (const KnownSignal& signal : ListSignals(version.tag)) {
      std::printf("%04X:%d ", signal.id,
                  static_cast<int>(signal.layout - ListLayouts().data()) + 1);
    }
    std::printf("\",\n");
  }
  std::printf("  },\n");
}

// The exchanges of each version, as "OPENING:ANSWERING:KEYS" with the ids and the names of
// the fields, as in "1000:1100:vif,host_tag". A "!" before the keys marks that a new opening
// replaces one that waits. A request that has waited for `give_up_ms` is given up.
void WriteExchanges() {
  std::printf("  give_up_ms = %d,\n  exchanges = {\n", static_cast<int>(kGiveUpMs));
  for (const HipVersionEntry& version : HipVersionTable) {
    std::printf("    \"");
    for (const Exchange& exchange : ListExchanges(version.tag)) {
      std::printf("%04X:%04X:%s", exchange.opening.id, exchange.answering.id,
                  exchange.replaces ? "!" : "");
      const char* separator = "";
      for (const ExchangeKey& key : exchange.keys) {
        if (key.opening == nullptr) break;
        std::printf("%s%s", separator, GetString(key.opening->name).c_str());
        separator = ",";
      }
      std::putchar(' ');
    }
    std::printf("\",\n");
  }
  std::printf("  },\n");
}

void WriteVocabulary() {
  std::printf("local vocabulary = {\n");
  WriteVersions();
  WriteLog();
  WriteTexts();
  WriteEventsAndEnds();
  WriteForms();
  WriteFields();
  WriteFailures();
  WriteLayouts();
  WriteEnumerations();
  WriteSignals();
  WriteExchanges();
  std::printf("}\n");
}

void CheckDescriptions() {
  const auto types = ListFieldTypes();
  for (const FieldDescription& description : kFieldDescriptions) {
    if (!types.contains(description.name)) {
      Fail(std::string("No signal has the field \"") + description.name + "\" of the descriptions");
    }
  }
}

}  // namespace

int main() {
  CheckDescriptions();
  WriteVocabulary();
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return 0;
  std::perror("standard output");
  return 1;
}
