// Makes the Wireshark plugin, one file: the vocabulary as a Lua table, and the parts of the
// logic after it. The table has the versions, the layouts, the labels and the
// signals of each version, so a new row, label or version needs no change in the
// logic. Layouts and labels are texts, which the logic reads where it needs them: a
// table for each field would be ten times as much for Lua to load and to keep.
//
// A part NAME.lua is a chunk of its own in the plugin, so that Lua reports an error with the
// name and line of the part. It is called with the vocabulary and the table `parts`, which
// has the results of the parts before it by their names.
//
// usage: generate_vocabulary PLUGIN PART...

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"
#include "fapi/vocabulary.h"
#include "hip/hip_versions.h"

namespace {

std::string GetString(TextRange range) { return std::string(GetText(range).text()); }

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
  if (field.form == FieldRenderer::kWords) return field.words;
  return field.form == FieldRenderer::kEnum16 ? field.enum_index : 0;
}

// A layout as "NAME MIN|NAME FORM OFFSET ARGUMENT|...". The dumps come first, as
// they are printed.
void WriteLayouts(std::FILE* output) {
  std::fprintf(output, "  layouts = {\n");
  for (const CompiledSignal& signal : ListLayouts()) {
    std::fprintf(output, "    \"%s %d", GetString(signal.name).c_str(), signal.min);
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

void WriteVocabulary(std::FILE* output) {
  std::fprintf(output, "local vocabulary = {\n");
  WriteVersions(output);
  WriteLayouts(output);
  WriteEnumerations(output);
  WriteSignals(output);
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

// In Lua, this string has no escape sequences, and its lines are those of the part.
void WritePart(const Part& part, std::FILE* output) {
  std::fprintf(output, "parts.%s = assert(load([==[\n%s]==], \"@wireshark/%s.lua\"))",
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
  std::vector<Part> parts;
  for (int i = 2; i < argc; ++i) {
    Part part{.name = std::filesystem::path(argv[i]).stem(), .text = {}};
    if (!ReadFile(argv[i], part.text)) {
      std::perror(argv[i]);
      return 1;
    }
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
