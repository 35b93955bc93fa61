// Makes the Wireshark plugin: writes the vocabulary as a Lua table and the plugin's
// logic after it. The table has the versions, the layouts, the labels and the
// signals of each version, so a new row, label or version needs no change in the
// logic. Layouts and labels are texts, which the logic reads where it needs them: a
// table for each field would be ten times as much for Lua to load and to keep.
//
// usage: generate_vocabulary LOGIC PLUGIN

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"
#include "fapi/vocabulary.h"
#include "hip/hip_versions.h"

namespace {

// The form of a field, by the name that udi.lua uses for it.
const char* FormName(FieldRenderer renderer) {
  switch (renderer) {
    case FieldRenderer::kU8:
      return "u8";
    case FieldRenderer::kU16:
      return "u16";
    case FieldRenderer::kU32:
      return "u32";
    case FieldRenderer::kI16:
      return "i16";
    case FieldRenderer::kI32:
      return "i32";
    case FieldRenderer::kX16:
      return "x16";
    case FieldRenderer::kX16NoSpace:
      return "x16_no_space";
    case FieldRenderer::kX32:
      return "x32";
    case FieldRenderer::kMac:
      return "mac";
    case FieldRenderer::kHex8:
      return "hex8";
    case FieldRenderer::kWords:
      return "words";
    case FieldRenderer::kEnum16:
      return "enum16";
    case FieldRenderer::kSpares:
      return "spares";
  }
  return "";
}

// The name in a field's or dump's prefix, as "vif" in " vif:".
std::string NameIn(TextRange prefix) {
  std::string_view text = GetText(prefix).text();
  if (text.front() == ' ') text.remove_prefix(1);
  return std::string(text.substr(0, text.find(':')));
}

void WriteVersions(std::FILE* output) {
  std::fprintf(output, "  versions = {\n");
  for (const HipVersionEntry& entry : HipVersionTable) {
    std::fprintf(output, "    {name = \"%s\", packed = 0x%08X},\n", entry.name,
                 static_cast<unsigned>(entry.version));
  }
  std::fprintf(output, "  },\n");
}

// The argument of a field's form: how many words, or which enumeration.
int FormArgument(const CompiledField& field) {
  if (field.renderer == FieldRenderer::kWords) return field.words;
  return field.renderer == FieldRenderer::kEnum16 ? field.enum_index : 0;
}

// A layout as "NAME MIN|NAME FORM OFFSET ARGUMENT|...". The dumps come first, as
// they are printed.
void WriteLayouts(std::FILE* output) {
  std::fprintf(output, "  layouts = {\n");
  for (const CompiledSignal& signal : ListSignals()) {
    std::fprintf(output, "    \"%s %d", std::string(GetText(signal.name).text()).c_str(),
                 signal.min);
    for (std::size_t dump = 0; dump < signal.dump_count; ++dump) {
      std::fprintf(output, "|%s dump 0 0", NameIn(signal.dump_prefixes[dump]).c_str());
    }
    for (const CompiledField& field : GetFields(signal)) {
      std::fprintf(output, "|%s %s %d %d", NameIn(field.prefix).c_str(), FormName(field.renderer),
                   field.offset, FormArgument(field));
    }
    std::fprintf(output, "\",\n");
  }
  std::fprintf(output, "  },\n");
}

// The enumerations that fields use, by index. A label is a line "VALUE VERSIONS
// TEXT", with the versions by their letters.
void WriteEnumerations(std::FILE* output) {
  std::set<std::uint8_t> indices;
  for (const CompiledSignal& signal : ListSignals()) {
    for (const CompiledField& field : GetFields(signal)) {
      if (field.renderer == FieldRenderer::kEnum16) indices.insert(field.enum_index);
    }
  }
  std::fprintf(output, "  enumerations = {\n");
  for (const std::uint8_t index : indices) {
    std::fprintf(output, "    [%d] = [[\n", index);
    for (const CompiledLabel& label : ListLabels(index)) {
      std::fprintf(output, "%04X ", label.value);
      for (std::size_t version = 0; version < kHipVersionCount; ++version) {
        if (label.versions.Contains(version)) std::fputc(GetTagLetter(version), output);
      }
      std::fprintf(output, " %s\n", std::string(GetText(label.text).text()).c_str());
    }
    std::fprintf(output, "]],\n");
  }
  std::fprintf(output, "  },\n");
}

// The signals of each version, as "ID:LAYOUT" with the layout's number, from 1.
void WriteSignals(std::FILE* output) {
  std::fprintf(output, "  signals = {\n");
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    std::fprintf(output, "    \"");
    for (unsigned id = 0; id <= 0xFFFF; ++id) {
      const CompiledSignal* const signal =
          FindSignal(static_cast<HipVersionTag>(version), static_cast<std::uint16_t>(id));
      if (signal == nullptr) continue;
      std::fprintf(output, "%04X:%d ", id, static_cast<int>(signal - ListSignals().data()) + 1);
    }
    std::fprintf(output, "\",\n");
  }
  std::fprintf(output, "  },\n");
}

void WriteVocabulary(std::FILE* output) {
  std::fprintf(output, "-- Generated from the tool's vocabulary. The plugin's logic follows it.\n");
  std::fprintf(output, "local vocabulary = {\n");
  WriteVersions(output);
  WriteLayouts(output);
  WriteEnumerations(output);
  WriteSignals(output);
  std::fprintf(output, "}\n\n");
}

bool AppendFile(const char* path, std::FILE* output) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream stream;
  stream << file.rdbuf();
  const std::string text = stream.str();
  return !file.fail() && std::fwrite(text.data(), 1, text.size(), output) == text.size();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s LOGIC PLUGIN\n", argv[0]);
    return 1;
  }
  std::FILE* const output = std::fopen(argv[2], "wb");
  if (output == nullptr) {
    std::perror(argv[2]);
    return 1;
  }
  WriteVocabulary(output);
  const bool is_complete = AppendFile(argv[1], output);
  if (std::fclose(output) != 0 || !is_complete) {
    std::perror(argv[2]);
    return 1;
  }
  return 0;
}
