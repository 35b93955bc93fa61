#include "support/log_builder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

void AppendLittleEndian(std::string& bytes, std::uint32_t value, std::size_t width) {
  for (std::size_t i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
}

std::uint32_t TimeWord(std::chrono::milliseconds time) {
  return static_cast<std::uint32_t>(time.count());
}

}  // namespace

std::string FromHex(std::string_view hex) {
  std::string digits(hex);
  std::erase_if(digits, [](char c) { return c == ' ' || c == ':'; });
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

std::uint32_t PackHipVersion(std::string_view dotted) {
  unsigned first = 0;
  unsigned second = 0;
  unsigned third = 0;
  if (std::sscanf(std::string(dotted).c_str(), "%u.%u.%u", &first, &second, &third) != 3) {
    std::abort();
  }
  return first << 24 | second << 16 | third;
}

Fapi::Fapi(std::uint16_t id) { U16(id).Bytes("ddccbbaa ddcc bbaa"); }

Fapi& Fapi::Append(std::uint32_t value, std::size_t width) {
  AppendLittleEndian(signal_, value, width);
  return *this;
}

Fapi& Fapi::Mac(std::string_view address) { return Bytes(address); }

Fapi& Fapi::Bytes(std::string_view hex) {
  signal_ += FromHex(hex);
  return *this;
}

Fapi& Fapi::PadTo(std::size_t length, char byte) {
  signal_.resize(length, byte);
  return *this;
}

Fapi& Fapi::Bulk(std::string_view hex) { return BulkBytes(FromHex(hex)); }

Fapi& Fapi::BulkBytes(std::string bytes) {
  bulk_ = std::move(bytes);
  return *this;
}

Log& Log::Word(std::uint32_t word) {
  AppendLittleEndian(bytes_, word, 4);
  return *this;
}

Log& Log::Words(std::initializer_list<std::uint32_t> words) {
  for (const std::uint32_t word : words) Word(word);
  return End();
}

Log& Log::Bytes(std::string_view bytes) {
  bytes_ += bytes;
  return *this;
}

Log& Log::End() {
  ends_.push_back(bytes_.size());
  return *this;
}

Log& Log::Header(std::string_view hip_version) {
  return Words({kHeaderMagic, 6, PackHipVersion(hip_version)});
}

Log& Log::TimeRef(std::uint32_t seconds) { return Words({kEventMagic, 0, 0, 4, seconds}); }

Log& Log::TimeRef(std::uint32_t seconds, std::uint32_t uptime, std::chrono::milliseconds time) {
  return Words({kEventMagic, TimeWord(time), 0, 8, seconds, uptime});
}

Log& Log::Load(std::chrono::milliseconds time) {
  return Words({kEventMagic, TimeWord(time), 1, 0});
}

Log& Log::Unload(std::chrono::milliseconds time) {
  return Words({kEventMagic, TimeWord(time), 2, 0});
}

Log& Log::Signal(std::chrono::milliseconds time, const Fapi& signal) {
  return Record(time, signal.signal() + signal.bulk(),
                static_cast<std::uint32_t>(signal.signal().size()));
}

Log& Log::Record(std::chrono::milliseconds time, std::string_view payload,
                 std::uint32_t signal_length) {
  Word(kSignalMagic).Word(TimeWord(time)).Word(static_cast<std::uint32_t>(payload.size()));
  return Word(signal_length).Bytes(payload).End();
}
