// Makes the Wireshark plugin, one file: the vocabulary as a Lua table, and the parts of the
// logic after it. The table has the versions, the layouts, the labels, and the signals
// and exchanges of each version, so a new row, label or version needs no change in the
// logic. Layouts and labels are texts, which the logic reads where it needs them: a
// table for each field would be ten times as much for Lua to load and to keep.
//
// A part NAME.lua is a chunk of its own in the plugin, so that Lua reports an error with the
// name and line of the part. It is called with the vocabulary and the table `parts`, which
// has the results of the parts before it by their names.
//
// usage: generate_vocabulary PLUGIN PART...

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fapi/compiled_signal.h"
#include "fapi/field_forms.h"
#include "fapi/hip_version_tags.h"
#include "fapi/vocabulary.h"
#include "field_descriptions.h"
#include "hip/exchange_rules.h"
#include "hip/failures.h"
#include "hip/hip_versions.h"

namespace {

[[noreturn]] void Fail(const std::string& message) {
  std::fprintf(stderr, "%s\n", message.c_str());
  std::exit(1);
}

std::string GetString(TextRange range) { return std::string(GetText(range).text()); }

void WriteVersions(std::FILE* output) {
  std::fprintf(output, "  versions = {\n");
  for (const HipVersionEntry& entry : HipVersionTable) {
    std::fprintf(output, "    {name = \"%s\", packed = 0x%08X},\n", entry.name,
                 static_cast<unsigned>(entry.version));
  }
  std::fprintf(output, "  },\n");
}

// The bytes of each form.
void WriteForms(std::FILE* output) {
  std::fprintf(output, "  forms = {\n");
  for (const FieldForm& form : kFieldForms) {
    std::fprintf(output, "    %s = %d,\n", form.name, form.width);
  }
  std::fprintf(output, "  },\n");
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
void WriteFields(std::FILE* output) {
  std::fprintf(output, "  fields = {\n");
  for (const auto& [name, type] : ListFieldTypes()) {
    std::fprintf(output, R"(    {name = "%s", type = "%s")", name.c_str(),
                 GetTypeName(type).c_str());
    if (type.is_hex) std::fprintf(output, ", is_hex = true");
    if (type.has_labels) std::fprintf(output, ", has_labels = true");
    if (const char* const text = FindDescription(name)) {
      std::fprintf(output, R"(, description = "%s")", text);
    }
    std::fprintf(output, "},\n");
  }
  std::fprintf(output, "  },\n");
}

// The argument of a field's form: how many words, or which enumeration.
int FormArgument(const CompiledField& field) {
  if (field.form == FieldRenderer::kWords) return field.words;
  return field.form == FieldRenderer::kEnum16 ? field.enum_index : 0;
}

// By kind: the field that says it, and what it shows on success.
void WriteFailures(std::FILE* output) {
  std::fprintf(output, "  failures = {\n");
  for (const FailureRule& rule : kFailureRules) {
    std::fprintf(output, "    %s = {field = \"%s\", success = \"%s\"},\n", rule.kind.data(),
                 rule.field.data(), rule.success.data());
  }
  std::fprintf(output, "  },\n");
}

// A layout as "NAME MIN FAILURE|NAME FORM OFFSET ARGUMENT|...", with the kind of failure that the
// signal can report, or "-". The dumps come first, as they are printed.
void WriteLayouts(std::FILE* output) {
  std::fprintf(output, "  layouts = {\n");
  for (const CompiledSignal& signal : ListLayouts()) {
    const FailureRule* const failure = FindFailureField(signal).rule;
    std::fprintf(output, "    \"%s %d %s", GetString(signal.name).c_str(), signal.min,
                 failure == nullptr ? "-" : failure->kind.data());
    for (const CompiledField& field : GetFields(signal)) {
      std::fprintf(output, "|%s %s %d %d", GetString(field.name).c_str(), GetForm(field.form).name,
                   field.offset, FormArgument(field));
    }
    std::fprintf(output, "\",\n");
  }
  std::fprintf(output, "  },\n");
}

// The enumerations that fields use, by index. A label is a line "VALUE VERSIONS
// TEXT", with the versions by their letters.
void WriteEnumerations(std::FILE* output) {
  std::fprintf(output, "  enumerations = {\n");
  for (std::size_t index = 0; index < CountEnumerations(); ++index) {
    std::fprintf(output, "    [%zu] = [[\n", index);
    for (const CompiledLabel& label : ListLabels(index)) {
      std::fprintf(output, "%04X ", label.value);
      for (const HipVersionEntry& version : HipVersionTable) {
        if (label.versions.Contains(version.tag)) std::fputc(GetLetter(version.tag), output);
      }
      std::fprintf(output, " %s\n", GetString(label.text).c_str());
    }
    std::fprintf(output, "]],\n");
  }
  std::fprintf(output, "  },\n");
}

// The signals of each version, as "ID:LAYOUT" with the layout's number, from 1.
void WriteSignals(std::FILE* output) {
  std::fprintf(output, "  signals = {\n");
  for (const HipVersionEntry& version : HipVersionTable) {
    std::fprintf(output, "    \"");
    for (const KnownSignal& signal : ListSignals(version.tag)) {
      std::fprintf(output, "%04X:%d ", signal.id,
                   static_cast<int>(signal.layout - ListLayouts().data()) + 1);
    }
    std::fprintf(output, "\",\n");
  }
  std::fprintf(output, "  },\n");
}

// The exchanges of each version, as "OPENING:ANSWERING:KEYS" with the ids and the names of
// the fields, as in "1000:1100:vif,host_tag". A "!" before the keys marks that a new opening
// replaces one that waits. A request that has waited for `give_up_ms` is given up.
void WriteExchanges(std::FILE* output) {
  std::fprintf(output, "  give_up_ms = %d,\n  exchanges = {\n", static_cast<int>(kGiveUpMs));
  for (const HipVersionEntry& version : HipVersionTable) {
    std::fprintf(output, "    \"");
    for (const Exchange& exchange : ListExchanges(version.tag)) {
      std::fprintf(output, "%04X:%04X:%s", exchange.opening.id, exchange.answering.id,
                   exchange.replaces ? "!" : "");
      const char* separator = "";
      for (const ExchangeKey& key : exchange.keys) {
        if (key.opening == nullptr) break;
        std::fprintf(output, "%s%s", separator, GetString(key.opening->name).c_str());
        separator = ",";
      }
      std::fputc(' ', output);
    }
    std::fprintf(output, "\",\n");
  }
  std::fprintf(output, "  },\n");
}

void WriteVocabulary(std::FILE* output) {
  std::fprintf(output, "local vocabulary = {\n");
  WriteVersions(output);
  WriteForms(output);
  WriteFields(output);
  WriteFailures(output);
  WriteLayouts(output);
  WriteEnumerations(output);
  WriteSignals(output);
  WriteExchanges(output);
  std::fprintf(output, "}\n\n");
}

// Returns whether the file was read to its end.
bool ReadFile(const char* path, std::string& text) {
  std::FILE* const file = std::fopen(path, "rb");
  if (file == nullptr) return false;
  char piece[4096];
  while (const std::size_t size = std::fread(piece, 1, sizeof piece, file)) {
    text.append(piece, size);
  }
  const bool is_complete = std::ferror(file) == 0;
  std::fclose(file);
  return is_complete;
}

struct Part {
  std::string name;  // without ".lua"
  std::string text;
};

// The plugin has fields of its own beside those of the signals. A part names them as in
// "udi.line". Names with a further dot cannot be those of a signal's field.
void CheckOwnNames(const Part& part) {
  const auto types = ListFieldTypes();
  constexpr std::string_view kStart = "\"udi.";
  for (std::size_t at = 0; (at = part.text.find(kStart, at)) != std::string::npos;) {
    at += kStart.size();
    const std::string name = part.text.substr(at, part.text.find('"', at) - at);
    if (types.contains(name)) {
      Fail(part.name + ".lua has a field \"udi." + name + "\", and so does a signal");
    }
  }
}

void CheckDescriptions() {
  const auto types = ListFieldTypes();
  for (const FieldDescription& description : kFieldDescriptions) {
    if (!types.contains(description.name)) {
      Fail(std::string("No signal has the field \"") + description.name + "\" of the descriptions");
    }
  }
}

// In Lua, this string has no escape sequences, and its lines are those of the part.
void WritePart(const Part& part, std::FILE* output) {
  std::fprintf(output, "parts.%s = assert(load([==[\n%s]==], '@wireshark/%s.lua'))",
               part.name.c_str(), part.text.c_str(), part.name.c_str());
  std::fprintf(output, "(vocabulary, parts)\n\n");
}

// Returns whether everything was written.
bool WritePlugin(const char* path, const std::vector<Part>& parts) {
  std::FILE* const output = std::fopen(path, "wb");
  if (output == nullptr) return false;
  std::fprintf(output,
               "-- Opens UDI logs in Wireshark and tshark, and shows each signal with its fields.\n"
               "-- Made of the tool's vocabulary and of the files that are named below.\n\n"
               "-- A copy in the plugin folder and one on the command line may both be loaded.\n"
               "-- Wireshark allows each protocol only once.\n"
               "if pcall(Dissector.get, \"udi\") and Dissector.get(\"udi\") then return end\n\n");
  WriteVocabulary(output);
  std::fprintf(output, "local parts = {}\n\n");
  for (const Part& part : parts) WritePart(part, output);
  const bool has_failed = std::ferror(output) != 0;
  return std::fclose(output) == 0 && !has_failed;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: %s PLUGIN PART...\n", argv[0]);
    return 1;
  }
  CheckDescriptions();
  std::vector<Part> parts;
  for (int i = 2; i < argc; ++i) {
    Part part{.name = std::filesystem::path(argv[i]).stem(), .text = {}};
    if (!ReadFile(argv[i], part.text)) {
      std::perror(argv[i]);
      return 1;
    }
    CheckOwnNames(part);
    parts.push_back(std::move(part));
  }
  // A failure leaves no part of a plugin, and an old one as it was.
  const std::string unfinished = argv[1] + std::string(".part");
  if (!WritePlugin(unfinished.c_str(), parts) || std::rename(unfinished.c_str(), argv[1]) != 0) {
    std::perror(unfinished.c_str());
    std::remove(unfinished.c_str());
    return 1;
  }
  return 0;
}
