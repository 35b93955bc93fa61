// A simple decoder, to compare the tool with. It prints the same text with a printf per
// field and a localtime per line. It reads only well-formed logs of version 14.5.12 with
// one epoch.
//
// usage: plain_printf LOG

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "base/little_endian.h"
#include "fapi/vocabulary.h"
#include "hip/hip_versions.h"

namespace {

std::uint32_t ReadWord(std::FILE* log) {
  std::uint8_t bytes[4];
  if (std::fread(bytes, 1, 4, log) < 4) std::exit(0);
  return LoadU32(bytes);
}

void PrintBytes(const std::uint8_t* bytes, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) std::printf("%.2x", bytes[i]);
}

void PrintFieldPlainly(const CompiledField& field, const std::uint8_t* bytes) {
  const PaddedText head = GetText(field.prefix);
  const auto size = static_cast<int>(head.size);
  switch (field.renderer) {
    case FieldRenderer::kU8:
      std::printf("%.*s%u", size, head.data, static_cast<unsigned>(*bytes));
      break;
    case FieldRenderer::kU16:
      std::printf("%.*s%u", size, head.data, static_cast<unsigned>(LoadU16(bytes)));
      break;
    case FieldRenderer::kU32:
      std::printf("%.*s%u", size, head.data, LoadU32(bytes));
      break;
    case FieldRenderer::kI16:
      std::printf("%.*s%d", size, head.data, static_cast<std::int16_t>(LoadU16(bytes)));
      break;
    case FieldRenderer::kI32:
      std::printf("%.*s%d", size, head.data, static_cast<std::int32_t>(LoadU32(bytes)));
      break;
    case FieldRenderer::kX16:
    case FieldRenderer::kX16NoSpace:
      std::printf("%.*s%.4x", size, head.data, static_cast<unsigned>(LoadU16(bytes)));
      break;
    case FieldRenderer::kX32:
      std::printf("%.*s%.8x", size, head.data, LoadU32(bytes));
      break;
    case FieldRenderer::kMac:
      std::printf("%.*s%.2x:%.2x:%.2x:%.2x:%.2x:%.2x", size, head.data, bytes[0], bytes[1],
                  bytes[2], bytes[3], bytes[4], bytes[5]);
      break;
    case FieldRenderer::kHex8:
      std::printf("%.*s", size, head.data);
      PrintBytes(bytes, 8);
      break;
    case FieldRenderer::kWords:
      std::printf("%.*s", size, head.data);
      for (int i = 0; i < field.words; ++i) {
        std::printf("0x%.4x ", static_cast<unsigned>(LoadU16(bytes + 2 * i)));
      }
      std::printf("]");
      break;
    case FieldRenderer::kSpares:
      std::printf(" spare_1:%u", LoadU32(bytes));
      std::printf(" spare_2:%u", LoadU32(bytes + 4));
      std::printf(" spare_3:%u", LoadU32(bytes + 8));
      break;
    case FieldRenderer::kEnum16: {
      const std::uint16_t value = LoadU16(bytes);
      const PaddedText label = FindLabel(field.enum_index, value, HipVersionTag::L);
      if (label.empty()) {
        std::printf("%.*s%u", size, head.data, static_cast<unsigned>(value));
      } else {
        std::printf("%.*s%.*s", size, head.data, static_cast<int>(label.size), label.data);
      }
      break;
    }
  }
}

void PrintSignalPlainly(const std::vector<std::uint8_t>& payload, std::uint32_t signal_length) {
  const CompiledSignal& layout = *FindSignal(HipVersionTag::L, LoadU16(payload.data()));
  const PaddedText name = GetText(layout.name);
  std::printf("%.*s", static_cast<int>(name.size), name.data);
  const bool has_bulk = payload.size() > signal_length;
  const std::size_t dump = has_bulk ? signal_length : layout.min;
  for (int i = 0; i < layout.dump_count; ++i) {
    const PaddedText head = GetText(layout.dump_prefixes[static_cast<std::size_t>(i)]);
    std::printf("%.*s", static_cast<int>(head.size), head.data);
    PrintBytes(payload.data() + dump, payload.size() - dump);
    std::printf("}");
  }
  for (const CompiledField& field : GetFields(layout)) {
    PrintFieldPlainly(field, payload.data() + field.offset);
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  std::FILE* const log = std::fopen(argv[1], "r");
  if (log == nullptr) return 1;
  std::printf("Decode Tool version:%s.1\n", HipVersionTable.back().name);
  for (int i = 0; i < 3; ++i) ReadWord(log);
  std::uint32_t time_base = 0;
  for (;;) {
    const std::uint32_t magic = ReadWord(log);
    const std::uint32_t time = ReadWord(log);
    const std::uint32_t size = ReadWord(log);
    const std::uint32_t signal_length = ReadWord(log);
    if (magic == 0x13572467) {
      time_base = ReadWord(log);
      continue;
    }
    std::vector<std::uint8_t> payload(size);
    if (std::fread(payload.data(), 1, size, log) < size) return 1;
    const std::time_t seconds = time_base + time / 1000;
    const std::tm local = *std::localtime(&seconds);
    std::printf("%04d/%02d/%02d-%02d:%02d:%02d.%03u ", local.tm_year + 1900, local.tm_mon + 1,
                local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, time % 1000);
    PrintSignalPlainly(payload, signal_length);
  }
}
