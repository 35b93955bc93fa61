#ifndef VRKT_FAPI_SIGNALS_SPARE_H_
#define VRKT_FAPI_SIGNALS_SPARE_H_

#include <array>
#include <cstddef>
#include <string_view>

#include "fapi/enumerations/result_codes.h"
#include "fapi/signal_row.h"

// The ids that no function uses yet. They print like any other signal, under a
// spare name with a small fixed list of fields.
//
// There are too many rows to write and too few rules to get wrong: the tables
// below name families of rows, and the compiler makes the rows.

enum class SpareLayout {
  kPlain,          // vif, spares
  kConfirm,        // vif, result_code, spares
  kDump,           // a dump, vif, spares
  kDumpConfirm,    // a dump, vif, result_code, spares
  kTurnedConfirm,  // result_code, vif, spares
};

// Three signals whose names have 1, 2 and 3 for the '#', at three ids in a row
// that lie directly above all other ids of their block. Each new signal in the
// block pushes them up. Confirms have a result_code.
struct SpareTriple {
  SignalName name;
  std::array<unsigned, kHipVersionCount> first_ids;
  std::size_t surplus_in_a;  // what Min counts beyond the last field, in A
};

// Signals whose names have the numbers `first` to `last` for the '#', at ids in
// a row from `first_id` on. Each keeps its id.
struct NumberedSpares {
  SignalName name;
  unsigned first;
  unsigned last;
  unsigned first_id;
  HipVersionSet versions;
  SpareLayout layout;
};

template <std::size_t kIds>
consteval SpareTriple Triple(SpareName name, const unsigned (&first_ids)[kIds],
                             std::size_t surplus_in_a = 0) {
  static_assert(kIds == kHipVersionCount, "a triple has an id for each version");
  return {name, std::to_array(first_ids), surplus_in_a};
}

consteval NumberedSpares Numbered(SpareName name, unsigned first, unsigned last, unsigned first_id,
                                  HipVersionSet versions, SpareLayout layout) {
  if (last < first || last > 9) throw "numbered spares have rising numbers of one digit";
  return {name, first, last, first_id, versions, layout};
}

// It looks like a slip, and it is what A does.
inline constexpr std::size_t kSurplusOfA = 2;

// clang-format off
inline constexpr SpareTriple kSpareTriples[] = {
    //                               A       B       C       D       E       F       G       H       I       J       K       L
    Triple("ma_spare_signal#_req",    {0x1001, 0x1001, 0x1001, 0x1002, 0x1005, 0x1005, 0x1002, 0x1005, 0x1005, 0x1005, 0x1005, 0x1005}),
    Triple("ma_spare_signal#_cfm",    {0x1101, 0x1101, 0x1101, 0x1102, 0x1105, 0x1105, 0x1102, 0x1105, 0x1105, 0x1105, 0x1105, 0x1105}),
    Triple("ma_spare_signal#_res",    {0x1200, 0x1200, 0x1200, 0x1200, 0x1203, 0x1203, 0x1200, 0x1203, 0x1203, 0x1203, 0x1203, 0x1203}, kSurplusOfA),
    Triple("ma_spare_signal#_ind",    {0x1303, 0x1303, 0x1302, 0x1302, 0x1305, 0x1305, 0x1302, 0x1305, 0x1305, 0x1305, 0x1305, 0x1305}),
    Triple("mlme_spare_signal#_req",  {0x2028, 0x2028, 0x202B, 0x2032, 0x203C, 0x2041, 0x2044, 0x2041, 0x2043, 0x2043, 0x2044, 0x2045}),
    Triple("mlme_spare_signal#_cfm",  {0x2128, 0x2128, 0x212B, 0x2132, 0x213C, 0x2141, 0x2144, 0x2141, 0x2143, 0x2143, 0x2144, 0x2145}),
    Triple("mlme_spare_signal#_res",  {0x2205, 0x2205, 0x2205, 0x2205, 0x2209, 0x2209, 0x2205, 0x2209, 0x2209, 0x2209, 0x2209, 0x2209}),
    Triple("mlme_spare_signal#_ind",  {0x2314, 0x2314, 0x2317, 0x231B, 0x2324, 0x2325, 0x231D, 0x2325, 0x2325, 0x2325, 0x2325, 0x2325}),
    Triple("debug_spare_signal#_req", {0x8007, 0x8000, 0x8000, 0x8000, 0x8003, 0x8003, 0x8000, 0x8003, 0x8003, 0x8003, 0x8003, 0x8003}),
    Triple("debug_spare_signal#_cfm", {0x8101, 0x8100, 0x8100, 0x8100, 0x8103, 0x8103, 0x8100, 0x8103, 0x8103, 0x8103, 0x8103, 0x8103}),
    Triple("debug_spare_signal#_res", {0x8200, 0x8200, 0x8200, 0x8200, 0x8203, 0x8203, 0x8200, 0x8203, 0x8203, 0x8203, 0x8203, 0x8203}),
    Triple("debug_spare_signal#_ind", {0x8306, 0x8303, 0x8303, 0x8303, 0x8307, 0x8307, 0x8303, 0x8307, 0x8307, 0x8307, 0x8307, 0x8307}),
    Triple("test_spare_signal#_req",  {0x900F, 0x901A, 0x901A, 0x901F, 0x9023, 0x9023, 0x9020, 0x9023, 0x9023, 0x9023, 0x9024, 0x9024}),
    Triple("test_spare_signal#_cfm",  {0x910B, 0x9112, 0x9112, 0x9116, 0x911A, 0x911A, 0x9117, 0x911A, 0x911A, 0x911A, 0x911B, 0x911B}),
    Triple("test_spare_signal#_res",  {0x9200, 0x9200, 0x9200, 0x9200, 0x9203, 0x9203, 0x9200, 0x9203, 0x9203, 0x9203, 0x9203, 0x9203}),
    Triple("test_spare_signal#_ind",  {0x9301, 0x9304, 0x9304, 0x9305, 0x9308, 0x9308, 0x9305, 0x9308, 0x9308, 0x9308, 0x9309, 0x9309}),
};

inline constexpr NumberedSpares kNumberedSpares[] = {
    Numbered("ma_spare#_req",    1, 3, 0x1002, "E-F,H-", SpareLayout::kDump),
    Numbered("ma_spare#_cfm",    1, 3, 0x1102, "E-F,H-", SpareLayout::kConfirm),
    Numbered("ma_spare#_res",    1, 3, 0x1200, "E-F,H-", SpareLayout::kPlain),
    Numbered("ma_spare#_ind",    1, 3, 0x1302, "E-F,H-", SpareLayout::kDump),
    Numbered("mlme_spare#_req",  3, 3, 0x2034, "E",      SpareLayout::kDump),
    Numbered("mlme_spare#_req",  4, 5, 0x203A, "E-F,H-", SpareLayout::kDump),
    Numbered("mlme_spare#_req",  6, 6, 0x203C, "F,H-",   SpareLayout::kDump),
    Numbered("mlme_spare#_cfm",  3, 3, 0x2134, "E",      SpareLayout::kConfirm),
    Numbered("mlme_spare#_cfm",  4, 4, 0x213A, "E-F,H-", SpareLayout::kConfirm),
    Numbered("mlme_spare#_cfm",  5, 5, 0x213B, "E-F",    SpareLayout::kTurnedConfirm),
    Numbered("mlme_spare#_cfm",  5, 5, 0x213B, "H-",     SpareLayout::kConfirm),
    Numbered("mlme_spare#_cfm",  6, 6, 0x213C, "F",      SpareLayout::kTurnedConfirm),
    Numbered("mlme_spare#_cfm",  6, 6, 0x213C, "H-",     SpareLayout::kConfirm),
    Numbered("mlme_spare#_res",  2, 4, 0x2206, "E-F,H-", SpareLayout::kPlain),
    Numbered("mlme_spare#_ind",  2, 2, 0x231C, "E",      SpareLayout::kDump),
    Numbered("mlme_spare#_ind",  3, 4, 0x231D, "E-F,H-", SpareLayout::kDump),
    Numbered("mlme_spare#_ind",  5, 5, 0x2324, "F,H-",   SpareLayout::kDump),
    Numbered("debug_spare#_req", 1, 3, 0x8000, "E-F,H-", SpareLayout::kDump),
    Numbered("debug_spare#_cfm", 1, 3, 0x8100, "E-F,H-", SpareLayout::kConfirm),
    Numbered("debug_spare#_res", 1, 3, 0x8200, "E-F,H-", SpareLayout::kPlain),
    Numbered("debug_spare#_ind", 2, 4, 0x8304, "E-F,H-", SpareLayout::kDump),
    Numbered("test_spare#_req",  1, 3, 0x9020, "E-F,H-", SpareLayout::kDump),
    Numbered("test_spare#_cfm",  1, 3, 0x9117, "E-F,H-", SpareLayout::kDumpConfirm),
    Numbered("test_spare#_res",  1, 3, 0x9200, "E-F,H-", SpareLayout::kPlain),
    Numbered("test_spare#_ind",  1, 3, 0x9305, "E-F,H-", SpareLayout::kDump),
};
// clang-format on

namespace spare_rows {

constexpr SignalRow MakeSpareRow(const SignalName& name, unsigned number, unsigned id,
                                 HipVersionSet versions, SpareLayout layout, std::size_t surplus) {
  constexpr std::string_view kDigits = "0123456789";
  SignalRow row(name, id, versions);
  row.name.number = kDigits.substr(number, 1);
  if (layout == SpareLayout::kDump || layout == SpareLayout::kDumpConfirm) row.Add(Dump("data"));
  if (layout == SpareLayout::kTurnedConfirm) row.Add(Enum("result_code", kResultCode));
  row.Add(U16("vif"));
  if (layout == SpareLayout::kConfirm || layout == SpareLayout::kDumpConfirm) {
    row.Add(Enum("result_code", kResultCode));
  }
  row.Add(Spares());
  row.SetMin(row.end + surplus);
  return row;
}

// A row for each distinct id and Min of each of the three.
template <typename Emit>
constexpr void MakeRows(const SpareTriple& triple, Emit emit) {
  const bool is_confirm = triple.name.behind == "_cfm";
  const SpareLayout layout = is_confirm ? SpareLayout::kConfirm : SpareLayout::kPlain;
  const auto surplus = [&triple](std::size_t version) {
    return version == static_cast<std::size_t>(HipVersionTag::A) ? triple.surplus_in_a : 0;
  };
  const auto are_alike = [&](std::size_t a, std::size_t b) {
    return triple.first_ids[a] == triple.first_ids[b] && surplus(a) == surplus(b);
  };
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    HipVersionSet versions;
    bool is_first = true;
    for (std::size_t other = 0; other < kHipVersionCount; ++other) {
      if (!are_alike(version, other)) continue;
      versions.Add(other);
      if (other < version) is_first = false;
    }
    if (!is_first) continue;
    for (unsigned number = 1; number <= 3; ++number) {
      emit(MakeSpareRow(triple.name, number, triple.first_ids[version] + number - 1, versions,
                        layout, surplus(version)));
    }
  }
}

// Where they have a dump, E wants four bytes more than the fields take.
template <typename Emit>
constexpr void MakeRows(const NumberedSpares& spares, Emit emit) {
  constexpr std::size_t kSurplusOfDumpsInE = 4;
  const bool has_dump =
      spares.layout == SpareLayout::kDump || spares.layout == SpareLayout::kDumpConfirm;
  const HipVersionSet in_e = has_dump ? spares.versions.Intersect("E") : HipVersionSet();
  const HipVersionSet others = spares.versions.Without(in_e);
  for (unsigned number = spares.first; number <= spares.last; ++number) {
    const unsigned id = spares.first_id + number - spares.first;
    if (!in_e.IsEmpty()) {
      emit(MakeSpareRow(spares.name, number, id, in_e, spares.layout, kSurplusOfDumpsInE));
    }
    if (!others.IsEmpty()) emit(MakeSpareRow(spares.name, number, id, others, spares.layout, 0));
  }
}

template <typename Emit>
constexpr void MakeAllRows(Emit emit) {
  for (const SpareTriple& triple : kSpareTriples) MakeRows(triple, emit);
  for (const NumberedSpares& spares : kNumberedSpares) MakeRows(spares, emit);
}

consteval std::size_t CountRows() {
  std::size_t count = 0;
  MakeAllRows([&count](const SignalRow& /*row*/) { ++count; });
  return count;
}
inline constexpr std::size_t kCount = CountRows();

}  // namespace spare_rows

consteval std::array<SignalRow, spare_rows::kCount> MakeSpareRows() {
  std::array<SignalRow, spare_rows::kCount> rows{};
  std::size_t next = 0;
  spare_rows::MakeAllRows([&](const SignalRow& row) { rows[next++] = row; });
  return rows;
}
inline constexpr std::array<SignalRow, spare_rows::kCount> kSpareRows = MakeSpareRows();

inline constexpr SignalTable kSpareSignals{kSpareRows};

#endif  // VRKT_FAPI_SIGNALS_SPARE_H_
