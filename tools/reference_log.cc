#include "reference_log.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "base/little_endian.h"
#include "fapi/vocabulary.h"
#include "hip/hip_versions.h"

namespace {

// A way to print 16 bits: an enumeration's index or, for a plain number, kNumber.
using Printer = int;
constexpr Printer kNumber = -1;

Printer GetPrinter(const CompiledField& field) {
  return field.form == FieldRenderer::kEnum16 ? field.enum_index : kNumber;
}

bool IsSixteenBitNumber(const CompiledField& field) {
  return field.form == FieldRenderer::kU16 || field.form == FieldRenderer::kEnum16;
}

// Finds values whose text differs between each way to print 16 bits and all others.
class ValueChooser {
 public:
  ValueChooser(HipVersionTag version, const std::vector<Printer>& printers)
      : version_(version), printers_(printers) {
    std::set<std::uint16_t> values;
    for (const Printer printer : printers) {
      for (const std::uint16_t value : LabelledValues(printer)) values.insert(value);
    }
    values_.assign(values.begin(), values.end());
    for (const Printer printer : printers) choices_[printer] = Choose(printer);
  }

  // The labelled values of a table in this version.
  std::vector<std::uint16_t> LabelledValues(Printer printer) const {
    std::vector<std::uint16_t> values;
    if (printer == kNumber) return values;
    for (const CompiledLabel& label : ListLabels(static_cast<std::size_t>(printer))) {
      if (label.versions.Contains(version_)) values.push_back(label.value);
    }
    return values;
  }

  const std::vector<std::uint16_t>& ValuesFor(Printer printer) const {
    return choices_.at(printer);
  }

 private:
  std::string_view Print(Printer printer, std::uint16_t value) const {
    if (printer == kNumber) return {};
    return FindLabel(static_cast<std::uint8_t>(printer), value, version_).text();
  }

  std::vector<std::uint16_t> Choose(Printer own) const {
    std::vector<std::uint16_t> candidates = LabelledValues(own);
    candidates.insert(candidates.end(), values_.begin(), values_.end());
    std::vector<Printer> others;
    std::ranges::copy_if(printers_, std::back_inserter(others),
                         [own](Printer other) { return other != own; });
    std::vector<std::uint16_t> chosen;
    while (!others.empty()) {
      std::uint16_t best = 0;
      std::ptrdiff_t most = 0;
      for (const std::uint16_t value : candidates) {
        const auto differing = std::ranges::count_if(
            others, [&](Printer other) { return Print(other, value) != Print(own, value); });
        if (differing > most) {
          most = differing;
          best = value;
        }
        if (most == std::ssize(others)) break;
      }
      if (most == 0) break;  // tables with the same labels in this version
      chosen.push_back(best);
      std::erase_if(others, [&](Printer other) { return Print(other, best) != Print(own, best); });
    }
    if (chosen.empty()) chosen.push_back(0);
    return chosen;
  }

  HipVersionTag version_;
  std::vector<Printer> printers_;
  std::vector<std::uint16_t> values_;
  std::map<Printer, std::vector<std::uint16_t>> choices_;
};

class RecordMaker {
 public:
  explicit RecordMaker(HipVersionTag version)
      : signals_(ListSignals(version)), chooser_(version, FindPrinters(signals_)) {}

  std::vector<ReferenceRecord> Make() && {
    std::set<Printer> done;
    for (const KnownSignal& signal : signals_) {
      AddSignal(signal);
      for (const CompiledField& field : GetFields(*signal.layout)) {
        const Printer printer = GetPrinter(field);
        if (printer != kNumber && done.insert(printer).second) AddLabels(signal, field);
      }
    }
    return std::move(records_);
  }

 private:
  enum class TopBit { kClear, kSet };

  static std::vector<Printer> FindPrinters(const std::vector<KnownSignal>& signals) {
    std::vector<Printer> printers = {kNumber};
    for (const KnownSignal& signal : signals) {
      for (const CompiledField& field : GetFields(*signal.layout)) {
        if (std::ranges::find(printers, GetPrinter(field)) == printers.end()) {
          printers.push_back(GetPrinter(field));
        }
      }
    }
    return printers;
  }

  // Makes a signal in which every byte is its offset or the complement of its offset.
  static std::string MakeSignal(const KnownSignal& signal, std::size_t length, TopBit top_bit) {
    std::string bytes(length, '\0');
    for (std::size_t i = 0; i < length; ++i) {
      bytes[i] = static_cast<char>(top_bit == TopBit::kSet ? ~i : i);
    }
    SetWord(bytes, 0, signal.id);
    return bytes;
  }

  static void SetWord(std::string& bytes, std::size_t offset, std::uint16_t value) {
    StoreU16(value, reinterpret_cast<std::uint8_t*>(bytes.data()) + offset);
  }

  void Add(const KnownSignal& signal, std::string bytes, const std::string& bulk = {}) {
    const auto length = static_cast<std::uint32_t>(bytes.size());
    records_.push_back({signal.id, std::move(bytes) + bulk, length});
  }

  void AddSignal(const KnownSignal& signal) {
    const std::string kBulk = "\xA1\xB2\xC3\xD4\xE5";
    const std::size_t min = signal.layout->min;
    const std::size_t whole = std::max<std::size_t>(min, signal.layout->end);
    Add(signal, MakeSignal(signal, min - 1, TopBit::kClear));
    Add(signal, MakeSignal(signal, min, TopBit::kClear));
    Add(signal, MakeSignal(signal, whole + 3, TopBit::kSet));
    Add(signal, MakeSignal(signal, min - 1, TopBit::kClear), kBulk);
    std::size_t rounds = 0;
    for (const CompiledField& field : GetFields(*signal.layout)) {
      if (!IsSixteenBitNumber(field)) continue;
      rounds = std::max(rounds, chooser_.ValuesFor(GetPrinter(field)).size());
    }
    for (std::size_t round = 0; round < rounds; ++round) {
      std::string bytes = MakeSignal(signal, whole, TopBit::kClear);
      for (const CompiledField& field : GetFields(*signal.layout)) {
        if (!IsSixteenBitNumber(field)) continue;
        const std::vector<std::uint16_t>& values = chooser_.ValuesFor(GetPrinter(field));
        SetWord(bytes, field.offset, values[std::min(round, values.size() - 1)]);
      }
      Add(signal, bytes, kBulk);
    }
  }

  void AddLabels(const KnownSignal& signal, const CompiledField& field) {
    std::set<std::uint16_t> values;
    for (const std::uint16_t value : chooser_.LabelledValues(GetPrinter(field))) {
      for (const int step : {-1, 0, 1}) values.insert(static_cast<std::uint16_t>(value + step));
    }
    const std::size_t whole = std::max(signal.layout->min, signal.layout->end);
    std::string bytes = MakeSignal(signal, whole, TopBit::kClear);
    for (const std::uint16_t value : values) {
      SetWord(bytes, field.offset, value);
      Add(signal, bytes);
    }
  }

  std::vector<KnownSignal> signals_;
  ValueChooser chooser_;
  std::vector<ReferenceRecord> records_;
};

}  // namespace

std::vector<ReferenceRecord> MakeReferenceRecords(HipVersionTag version) {
  return RecordMaker(version).Make();
}

Log MakeReferenceLog(HipVersionTag version) {
  Log log;
  log.Header(HipVersionTable[GetIndex(version)].name);
  Log::Time time = 0ms;
  for (const ReferenceRecord& record : MakeReferenceRecords(version)) {
    log.Record(time++, record.payload, record.signal_length);
  }
  return log;
}
