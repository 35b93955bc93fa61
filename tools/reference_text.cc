// Prints how each version decodes the records of its reference log, one line per record: the
// version, the id, the lengths of signal and bulk, and the text. A signal that is too short has
// no text. Implements `./dev text`.

#include <cstdio>

#include "fapi/compiled_signal.h"
#include "hip/hip_versions.h"
#include "reference_log.h"

int main() {
  for (const HipVersionEntry& version : HipVersionTable) {
    for (const ReferenceRecord& record : MakeReferenceRecords(version.tag)) {
      const auto length = static_cast<std::uint32_t>(record.payload.size());
      const std::uint32_t bulk_length = length - record.signal_length;
      std::printf("%s 0x%04X %u+%u ", version.name, record.id, record.signal_length, bulk_length);
      std::string block = record.payload;
      block.resize(length + kMaxSignalEnd);  // as the reader pads it
      const auto* const bytes = reinterpret_cast<const std::uint8_t*>(block.data());
      if (version.decoder(record.signal_length, bytes, bulk_length, bytes + record.signal_length, 0,
                          nullptr) == 0) {
        std::putchar('\n');
      }
    }
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
