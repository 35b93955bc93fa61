#ifndef VRKT_TOOLS_LOG_BUILDER_H_
#define VRKT_TOOLS_LOG_BUILDER_H_

#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "log/log_writer.h"

// Builds logs in a short notation:
//
//   Log().Header("14.5.12").TimeRef(1000).Signal(1500ms, Fapi(0x1000).U16(1).Bulk("0102"))

// NOLINTNEXTLINE(google-global-names-in-headers): part of the notation
using std::chrono_literals::operator""ms;

// Converts hexadecimal digits to bytes. Blanks and colons are ignored.
inline std::string FromHex(std::string_view hex) {
  std::string digits(hex);
  std::erase_if(digits, [](char c) { return c == ' ' || c == ':'; });
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

// Little-endian.
inline std::string ToBytes(std::uint32_t value, std::size_t width) {
  std::string bytes;
  for (; width > 0; --width, value >>= 8) bytes += static_cast<char>(value & 0xFF);
  return bytes;
}

// A signal, starting with its id, and the bulk after it. The other header bytes have
// values that no decoded line may show.
class Fapi {
 public:
  explicit Fapi(std::uint16_t id) { U16(id).Bytes("ddccbbaa ddcc bbaa"); }

  Fapi& U8(unsigned value) { return Append(ToBytes(value, 1)); }
  // One or several 16-bit words.
  template <typename... Value>
  Fapi& U16(Value... values) {
    return Append((ToBytes(static_cast<std::uint32_t>(values), 2) + ...));
  }
  template <typename... Value>
  Fapi& U32(Value... values) {
    return Append((ToBytes(static_cast<std::uint32_t>(values), 4) + ...));
  }
  Fapi& Mac(std::string_view address) { return Bytes(address); }  // as in "00:0a:0b:0c:0d:0e"
  Fapi& Bytes(std::string_view hex) { return Append(FromHex(hex)); }
  Fapi& Spares() { return U32(0, 0, 0); }
  Fapi& PadTo(std::size_t length, char byte = '\0') {  // truncates a longer signal
    signal_.resize(length, byte);
    return *this;
  }
  Fapi& Bulk(std::string_view hex) { return BulkBytes(FromHex(hex)); }
  Fapi& BulkBytes(std::string bytes) {
    bulk_ = std::move(bytes);
    return *this;
  }

  const std::string& signal() const { return signal_; }
  const std::string& bulk() const { return bulk_; }

 private:
  Fapi& Append(const std::string& bytes) {
    signal_ += bytes;
    return *this;
  }

  std::string signal_;
  std::string bulk_;
};

class Log {
 public:
  using Time = std::chrono::milliseconds;

  Log& Bytes(std::string_view bytes) {
    bytes_ += bytes;
    return *this;
  }
  Log& Words(std::initializer_list<std::uint32_t> words) {
    AppendWords(words, bytes_);
    return EndUnit();
  }
  Log& Header(std::string_view hip_version) {
    const char* number = hip_version.data();
    const char* const end = number + hip_version.size();
    std::uint32_t numbers[3];
    for (std::uint32_t& value : numbers) {
      const auto [rest, error] = std::from_chars(number, end, value);
      if (error != std::errc()) std::abort();
      number = rest == end ? end : rest + 1;
    }
    AppendHeader(numbers[0] << 24 | numbers[1] << 16 | numbers[2], bytes_);
    return EndUnit();
  }
  Log& TimeRef(std::uint32_t seconds) { return Event(DriverEventType::kTimeRef, 0ms, {seconds}); }
  Log& TimeRef(std::uint32_t seconds, std::uint32_t uptime, Time time = 0ms) {
    return Event(DriverEventType::kTimeRef, time, {seconds, uptime});
  }
  Log& Load(Time time) { return Event(DriverEventType::kLoad, time, {}); }
  Log& Unload(Time time) { return Event(DriverEventType::kUnload, time, {}); }
  Log& Signal(Time time, const Fapi& signal) {
    return Record(time, signal.signal() + signal.bulk(), signal.signal().size());
  }
  // A record with any signal length, also one that does not fit the payload.
  Log& Record(Time time, std::string_view payload, std::size_t signal_length) {
    AppendSignalHeader(static_cast<std::int32_t>(time.count()),
                       static_cast<std::uint32_t>(payload.size()),
                       static_cast<std::uint32_t>(signal_length), bytes_);
    bytes_ += payload;
    return EndUnit();
  }

  const std::string& bytes() const { return bytes_; }
  // The end of each header and record so far, in bytes.
  const std::vector<std::size_t>& ends() const { return ends_; }

 private:
  Log& Event(DriverEventType type, Time time, std::initializer_list<std::uint32_t> words) {
    AppendEvent(type, static_cast<std::int32_t>(time.count()), words, bytes_);
    return EndUnit();
  }
  Log& EndUnit() {
    ends_.push_back(bytes_.size());
    return *this;
  }

  std::string bytes_;
  std::vector<std::size_t> ends_;
};

#endif  // VRKT_TOOLS_LOG_BUILDER_H_
