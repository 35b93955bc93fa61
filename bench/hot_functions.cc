// Measures each function that takes a large part of a record's time.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <iostream>
#include <span>
#include <vector>

#include "base/little_endian.h"
#include "base/text_piece.h"
#include "fapi/vocabulary.h"
#include "hip/field_rendering.h"
#include "hip/hip_versions.h"
#include "log/line_stamp.h"

namespace {

void StampOfARepeatedSecond(benchmark::State& state) {
  std::int32_t time = 0;
  for (auto _ : state) PrintLineStamp({1780297200, time++ % 1000});
}
BENCHMARK(StampOfARepeatedSecond);

void StampOfANewSecond(benchmark::State& state) {
  std::uint32_t second = 1780297200;
  for (auto _ : state) PrintLineStamp({second++, 0});
}
BENCHMARK(StampOfANewSecond);

void Decimal(benchmark::State& state) {
  std::uint32_t value = 1;
  for (auto _ : state) {
    TextPiece<16> piece;
    piece.AppendDecimal(value >> (value & 31U));
    benchmark::DoNotOptimize(piece);
    value = value * 1664525 + 1013904223;
  }
}
BENCHMARK(Decimal);

void HexadecimalDump(benchmark::State& state) {
  const std::vector<std::uint8_t> bytes(static_cast<std::size_t>(state.range(0)), 0xA5);
  TextPiece<4096> piece;
  for (auto _ : state) {
    piece.Clear();
    piece.AppendHex(bytes.data(), bytes.size());
    benchmark::DoNotOptimize(piece);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(HexadecimalDump)->Arg(13)->Arg(64)->Arg(1500);

std::uint8_t FindRates() {
  for (const CompiledField& field : GetFields(*FindSignal(kLastHipVersionTag, 0x9007))) {
    if (GetText(field.name).text() == "rate") return field.enum_index;
  }
  std::abort();
}

void LabelOfARate(benchmark::State& state) {
  const std::uint8_t rates = FindRates();
  const std::span<const CompiledLabel> labels = ListLabels(rates);
  std::size_t row = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(FindLabel(rates, labels[row].value, kLastHipVersionTag));
    row = (row + 331) % labels.size();
  }
}
BENCHMARK(LabelOfARate);

void WholeLine(benchmark::State& state) {
  std::vector<std::uint8_t> payload(34 + 40);
  StoreU16(0x1000, payload.data());
  const HipDecoder decoder = HipVersionTable.back().decoder;
  for (auto _ : state) decoder(34, payload.data(), 40, payload.data() + 34, 0, nullptr);
}
BENCHMARK(WholeLine);

}  // namespace

// The functions print to standard output, which is discarded. The report goes to
// standard error.
int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
  benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);  // no colours
  reporter.SetOutputStream(&std::cerr);
  reporter.SetErrorStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(&reporter);
}
