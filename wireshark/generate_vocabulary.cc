// Makes the Wireshark plugin: writes the vocabulary as a Lua table and the plugin's
// logic after it. The table has the versions, the layouts, the label tables, and
// the layout of each id in each version, so a new row, label or version needs no
// change in the logic.
//
// usage: generate_vocabulary LOGIC PLUGIN

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "fapi/enum_table.h"
#include "fapi/hip_version_tags.h"
#include "fapi/signal_layout.h"
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

// The name in a field's or dump's head, as "vif" in " vif:".
std::string NameIn(LayoutText head) {
  std::string_view text = TextOf(head).text();
  if (text.front() == ' ') text.remove_prefix(1);
  return std::string(text.substr(0, text.find(':')));
}

// The tables that the layouts use, numbered from 1 in order of first use.
std::size_t NumberOf(const EnumTable* table, std::vector<const EnumTable*>& tables) {
  for (std::size_t i = 0; i < tables.size(); ++i) {
    if (tables[i] == table) return i + 1;
  }
  tables.push_back(table);
  return tables.size();
}

void WriteVersions(std::FILE* output) {
  std::fprintf(output, "  versions = {\n");
  for (const HipVersionEntry& entry : KnownHipVersions()) {
    std::fprintf(output, "    {name = \"%s\", packed = 0x%08X},\n", entry.name,
                 static_cast<unsigned>(entry.version));
  }
  std::fprintf(output, "  },\n");
}

// A layout as {name, min, dumps, fields}; a field as {name, form, offset}, with
// the number of words or of the label table where its form has one.
void WriteLayout(std::FILE* output, const SignalLayout& layout,
                 std::vector<const EnumTable*>& tables) {
  std::fprintf(output, "    {\"%s\", %d, {", std::string(TextOf(layout.name).text()).c_str(),
               layout.min);
  for (std::size_t dump = 0; dump < layout.dump_count; ++dump) {
    std::fprintf(output, "\"%s\", ", NameIn(layout.dumps[dump]).c_str());
  }
  std::fprintf(output, "}, {");
  for (const FieldLayout& field : FieldsOf(layout)) {
    std::fprintf(output, "{\"%s\", \"%s\", %d", NameIn(field.head).c_str(),
                 FormName(field.renderer), field.offset);
    if (field.renderer == FieldRenderer::kWords) std::fprintf(output, ", %d", field.words);
    if (field.renderer == FieldRenderer::kEnum16) {
      std::fprintf(output, ", %zu", NumberOf(field.labels, tables));
    }
    std::fprintf(output, "}, ");
  }
  std::fprintf(output, "}},\n");
}

void WriteLayouts(std::FILE* output, std::vector<const EnumTable*>& tables) {
  std::fprintf(output, "  layouts = {\n");
  for (const SignalLayout& layout : AllSignalLayouts()) WriteLayout(output, layout, tables);
  std::fprintf(output, "  },\n");
}

// A label as {value, text, versions}, the versions by their letters.
void WriteLabelTables(std::FILE* output, const std::vector<const EnumTable*>& tables) {
  std::fprintf(output, "  label_tables = {\n");
  for (const EnumTable* table : tables) {
    std::fprintf(output, "    {\n");
    for (std::size_t row = 0; row < table->size(); ++row) {
      std::string versions;
      for (std::size_t version = 0; version < kHipVersionCount; ++version) {
        if (table->versions(row).Contains(version)) versions += TagLetter(version);
      }
      std::fprintf(output, "      {0x%04X, [[%s]], \"%s\"},\n", table->value(row),
                   std::string(table->text(row).text()).c_str(), versions.c_str());
    }
    std::fprintf(output, "    },\n");
  }
  std::fprintf(output, "  },\n");
}

// For each version, the number of the layout (from 1) of each id.
void WriteSignals(std::FILE* output) {
  std::fprintf(output, "  signals = {\n");
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    std::fprintf(output, "    {");
    for (unsigned id = 0; id <= 0xFFFF; ++id) {
      const SignalLayout* const layout =
          FindSignal(static_cast<HipVersionTag>(version), static_cast<std::uint16_t>(id));
      if (layout == nullptr) continue;
      std::fprintf(output, "[0x%04X] = %d, ", id,
                   static_cast<int>(layout - AllSignalLayouts().data()) + 1);
    }
    std::fprintf(output, "},\n");
  }
  std::fprintf(output, "  },\n");
}

void WriteVocabulary(std::FILE* output) {
  std::vector<const EnumTable*> tables;
  std::fprintf(output, "-- Generated from the tool's vocabulary. The plugin's logic follows it.\n");
  std::fprintf(output, "local vocabulary = {\n");
  WriteVersions(output);
  WriteLayouts(output, tables);
  WriteLabelTables(output, tables);
  WriteSignals(output);
  std::fprintf(output, "}\n\n");
}

bool AppendFile(const char* path, std::FILE* output) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return !file.fail() &&
         std::fwrite(text.view().data(), 1, text.view().size(), output) == text.view().size();
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
