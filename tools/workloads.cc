#include "workloads.h"

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <random>
#include <span>
#include <utility>
#include <vector>

#include "base/little_endian.h"
#include "fapi/vocabulary.h"
#include "hip/hip_versions.h"
#include "log/log_writer.h"
#include "session_workload.h"

namespace {

// The figures in the documents are for this version.
constexpr HipVersionTag kVersion = HipVersionTag::L;

class Generator {
 public:
  explicit Generator(std::string_view name) : name_(name) {
    for (const KnownSignal& signal : ListSignals(kVersion)) {
      any_.push_back(signal.id);
      if (signal.id >> 12 == 2) management_.push_back(signal.id);
    }
  }

  // Returns the bytes of the next record, of the first one with the header before it.
  std::string NextRecord() {
    if (place_ == 0) AppendHeader();
    AppendRecord(place_++);
    return std::exchange(log_, {});
  }

 private:
  void AppendHeader() {
    ::AppendHeader(HipVersionTable[GetIndex(kVersion)].version, log_);
    AppendEvent(DriverEventType::kTimeRef, 0, {1780297200}, log_);
  }

  void AppendRecord(std::uint32_t place) {
    std::uint32_t bulk = 0;
    std::uint16_t id = 0;
    const std::uint32_t kind = name_ == "mixed" || name_ == "seconds" ? Below(10)
                               : name_ == "management"                ? 6
                                                                      : 0;
    if (kind < 6) {
      static const std::vector<std::uint16_t> kDataPath = {0x1000, 0x1100, 0x1300};
      id = OneOf(kDataPath);
      bulk = name_ == "frames" ? 1500 : Below(129);
    } else {
      id = OneOf(kind < 9 ? management_ : any_);
      bulk = Chance(30) ? Below(65) : 0;
    }
    const std::string signal = MakeSignal(id);
    const auto length = static_cast<std::uint32_t>(signal.size());
    // Three records per millisecond, as in a busy second.
    const std::uint32_t time = name_ == "seconds" ? place * 1000 : place / 3;
    AppendSignalHeader(static_cast<std::int32_t>(time), length + bulk, length, log_);
    log_ += signal;
    for (std::uint32_t i = 0; i < bulk; ++i) log_ += static_cast<char>(random_());
  }

  std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_() % limit); }
  bool Chance(std::uint32_t percent) { return Below(100) < percent; }
  std::uint16_t OneOf(const std::vector<std::uint16_t>& ids) {
    return ids[Below(static_cast<std::uint32_t>(ids.size()))];
  }

  std::string MakeSignal(std::uint16_t id) {
    const CompiledSignal& layout = *FindSignal(kVersion, id);
    std::vector<std::uint8_t> bytes(layout.min < layout.end ? layout.end : layout.min);
    StoreU16(id, bytes.data());
    std::span<const CompiledField> fields = GetFields(layout);
    if (layout.ends_in_spares) fields = fields.first(fields.size() - kSpareCount);
    for (const CompiledField& field : fields) FillField(field, bytes.data() + field.offset);
    return {bytes.begin(), bytes.end()};
  }

  // The rarer forms stay zero.
  void FillField(const CompiledField& field, std::uint8_t* bytes) {
    switch (field.form) {
      case FieldRenderer::kU16:
      case FieldRenderer::kI16:
      case FieldRenderer::kX16:
        StoreU16(static_cast<std::uint16_t>(Chance(50) ? Below(16) : random_()), bytes);
        break;
      case FieldRenderer::kU32:
      case FieldRenderer::kI32:
      case FieldRenderer::kX32:
        StoreU32(static_cast<std::uint32_t>(random_()), bytes);
        break;
      case FieldRenderer::kMac:
        for (int i = 0; i < 6; ++i) bytes[i] = static_cast<std::uint8_t>(random_());
        break;
      case FieldRenderer::kEnum16:
        StoreU16(PickValue(ListLabels(field.enum_index)), bytes);
        break;
      case FieldRenderer::kU8:
      case FieldRenderer::kX16NoSpace:
      case FieldRenderer::kHex8:
      case FieldRenderer::kWords:
      case FieldRenderer::kDump:
        break;
    }
  }

  // A labelled value, or any value in 3 % of the calls.
  std::uint16_t PickValue(std::span<const CompiledLabel> labels) {
    if (Chance(3)) return static_cast<std::uint16_t>(random_());
    for (;;) {
      const std::size_t row = Below(static_cast<std::uint32_t>(labels.size()));
      if (labels[row].versions.Contains(kVersion)) return labels[row].value;
    }
  }

  std::string_view name_;
  std::mt19937 random_{20260601};
  std::vector<std::uint16_t> any_;
  std::vector<std::uint16_t> management_;
  std::uint32_t place_ = 0;
  std::string log_;
};

// Each call returns the bytes of the next record.
std::function<std::string()> MakeSource(std::string_view name) {
  if (name == "session") return MakeSession();
  return [generator = Generator(name)]() mutable { return generator.NextRecord(); };
}

}  // namespace

std::string MakeWorkload(std::string_view name, std::size_t records) {
  const std::function<std::string()> next = MakeSource(name);
  std::string log;
  for (std::size_t i = 0; i < records; ++i) log += next();
  return log;
}

bool WriteWorkload(std::string_view name, std::uint32_t records, std::FILE* file) {
  const std::function<std::string()> next = MakeSource(name);
  for (std::uint32_t i = 0; i < records; ++i) {
    const std::string bytes = next();
    if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) return false;
  }
  return std::fflush(file) == 0;
}
