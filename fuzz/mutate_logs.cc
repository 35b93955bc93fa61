// Damages whole logs and runs the built tool on them: whatever is cut off,
// flipped, put in or taken out, the tool ends by itself with a status of its own,
// and all that it printed before the damage stays as it was.
//
// usage: mutate_logs SECONDS [SEED]

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <string>

#include "session_log.h"
#include "support/process.h"

namespace {

struct Damage {
  std::string bytes;
  std::size_t first;  // the first byte that may differ
};

class Mutator {
 public:
  explicit Mutator(unsigned seed) : random_(seed) {}

  Damage Mutate(const std::string& log) {
    Damage damage{log, Below(log.size())};
    const auto place = damage.bytes.begin() + static_cast<std::ptrdiff_t>(damage.first);
    const std::size_t count = 1 + Below(8);
    switch (Below(5)) {
      case 0:
        damage.bytes.resize(damage.first);
        break;
      case 1:
        *place = static_cast<char>(*place ^ 1 << Below(8));
        break;
      case 2:
        *place = static_cast<char>(Below(2) == 0 ? 0xFF : Below(256));
        break;
      case 3:
        damage.bytes.insert(damage.first, RandomBytes(count));
        break;
      default:
        damage.bytes.erase(damage.first, count);
        break;
    }
    return damage;
  }

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }
  std::string RandomBytes(std::size_t count) {
    std::string bytes;
    while (bytes.size() < count) bytes += static_cast<char>(random_());
    return bytes;
  }

  std::mt19937 random_;
};

// The last end of a record that lies before the damage.
std::size_t LastWholeEnd(const Log& log, std::size_t first_damaged) {
  std::size_t last = 0;
  for (const std::size_t end : log.ends()) {
    if (end <= first_damaged) last = end;
  }
  return last;
}

}  // namespace

int main(int argc, char** argv) {
  const auto seconds = std::chrono::seconds(argc > 1 ? std::atoi(argv[1]) : 60);
  const unsigned seed =
      argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : std::random_device()();
  std::printf("mutate_logs: seed %u\n", seed);
  const Log log = SessionLog();
  std::map<std::size_t, std::string> text_up_to;
  Mutator mutator(seed);
  unsigned runs = 0;
  const auto end = std::chrono::steady_clock::now() + seconds;
  for (; std::chrono::steady_clock::now() < end; ++runs) {
    const Damage damage = mutator.Mutate(log.bytes());
    const std::size_t whole = LastWholeEnd(log, damage.first);
    if (!text_up_to.contains(whole)) {
      text_up_to[whole] = RunTool({.input = log.bytes().substr(0, whole)}).out;
    }
    const ToolResult result = RunTool({.arguments = {"stdin", "--pcap"}, .input = damage.bytes});
    const bool ends_by_itself = result.status == 0 || result.status == 1 || result.status == 255;
    if (ends_by_itself && result.out.starts_with(text_up_to[whole])) continue;
    WriteFile("damaged.udi", damage.bytes);
    std::printf("mutate_logs: status %d; see damaged.udi\n%s", result.status, result.err.c_str());
    return 1;
  }
  std::printf("mutate_logs: %u damaged logs, nothing found\n", runs);
  return 0;
}
