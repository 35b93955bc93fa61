// Writes seeds for the fuzzers: signals of all versions, and for the fuzzer of
// the whole tool the example log and a short log per version.
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
  for (const HipVersionName& version : kHipVersionNames) {
    const std::size_t index = GetIndex(version.tag);
    for (const KnownSignal& known : ListSignals(version.tag)) {
      if ((known.id + index) % 8 != 0) continue;
      const Fapi signal = Fapi(known.id).PadTo(known.layout->min, '\1').Bulk("0102030405");
      const std::string payload = signal.signal() + signal.bulk();
      const std::string tag(1, static_cast<char>(index));
      const std::string name = std::to_string(index) + "_" + std::to_string(known.id);
      WriteSeed(directory / "decode_signal", name, tag + std::string("\5\0", 2) + payload);
    }
  }
  WriteSeed(directory / "compare_queries", "query", "1");
  const auto write_log = [&](const std::string& name, const std::string& log) {
    WriteSeed(directory / "query_log", name, log);
    WriteSeed(directory / "decode_log", name, '\0' + log);
    WriteSeed(directory / "redact_log", name, '\0' + log);
  };
  write_log("session", SessionLog().bytes());
  for (const HipVersionName& version : kHipVersionNames) {
    const Log log = MakeReferenceLog(version.tag);
    const std::vector<std::size_t>& ends = log.ends();
    const std::string header = log.bytes().substr(0, ends[0]);
    std::string seed = header + Log().TimeRef(1000, 5).bytes();
    for (std::size_t i = 1; i < ends.size(); i += 200) {
      seed += log.bytes().substr(ends[i - 1], ends[i] - ends[i - 1]);
    }
    seed += Log().Unload(1ms).Load(2ms).bytes() + header + Log().Load(3ms).bytes();
    write_log(version.dotted, seed);
  }
}
