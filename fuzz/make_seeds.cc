// Writes seeds for the fuzzers: signals and fields of all versions, and for the fuzzers
// of the whole tool the example log and a short log per version.
//
// usage: make_seeds DIRECTORY

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "fapi/vocabulary.h"
#include "log_builder.h"
#include "reference_log.h"
#include "session_log.h"

namespace {

void WriteSeed(const std::filesystem::path& directory, const std::string& name,
               const std::string& bytes) {
  std::filesystem::create_directories(directory);
  std::ofstream(directory / name, std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  const std::filesystem::path directory = argv[1];
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    for (unsigned id = 0; id <= 0xFFFF; ++id) {
      const auto id16 = static_cast<std::uint16_t>(id);
      const CompiledSignal* const layout = FindSignal(static_cast<HipVersionTag>(version), id16);
      if (layout == nullptr || (id + version) % 8 != 0) continue;
      const Fapi signal = Fapi(id16).PadTo(layout->min, '\1').Bulk("0102030405");
      const std::string payload = signal.signal() + signal.bulk();
      const std::string tag(1, static_cast<char>(version));
      const std::string name = std::to_string(version) + "_" + std::to_string(id);
      WriteSeed(directory / "decode_signal", name, tag + std::string("\5\0", 2) + payload);
      WriteSeed(directory / "route_record", name, tag + ToBytes(layout->min, 4) + payload);
    }
  }
  for (unsigned layout = 0; layout < ListSignals().size(); layout += 7) {
    for (unsigned field = 0; field < ListSignals()[layout].field_count; ++field) {
      const std::string choice = ToBytes(layout | field << 16 | layout << 24, 4);
      WriteSeed(directory / "render_field", std::to_string(layout) + "_" + std::to_string(field),
                choice + std::string(64, '\2'));
    }
  }
  WriteSeed(directory / "tool", "session", SessionLog().bytes());
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    const Log log = MakeReferenceLog(static_cast<HipVersionTag>(version));
    const std::vector<std::size_t>& ends = log.ends();
    const std::string header = log.bytes().substr(0, ends[0]);
    std::string seed = header + Log().TimeRef(1000, 5).bytes();
    for (std::size_t i = 1; i < ends.size(); i += 200) {
      seed += log.bytes().substr(ends[i - 1], ends[i] - ends[i - 1]);
    }
    seed += Log().Unload(1ms).Load(2ms).bytes() + header + Log().Load(3ms).bytes();
    WriteSeed(directory / "tool", std::to_string(version), seed);
  }
}
