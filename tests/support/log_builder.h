#ifndef VRKT_TESTS_SUPPORT_LOG_BUILDER_H_
#define VRKT_TESTS_SUPPORT_LOG_BUILDER_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Builds logs whose source reads like the log:
//
//   Log().Header("14.5.12").TimeRef(1000).Signal(1500ms, Fapi(0x1000).U16(1).Bulk("0102"))

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

// The bytes that a text of hexadecimal digits and blanks stands for.
std::string FromHex(std::string_view hex);

// The packed form of a dotted version, as a log's header has it.
std::uint32_t PackHipVersion(std::string_view dotted);

// A signal from its id on, with the bulk behind it. Its header's other bytes are
// filled with values that must never be printed.
class Fapi {
 public:
  explicit Fapi(std::uint16_t id);

  Fapi& U8(unsigned value) { return Append(value, 1); }
  Fapi& U16(unsigned value) { return Append(value, 2); }
  Fapi& U32(std::uint32_t value) { return Append(value, 4); }
  Fapi& Mac(std::string_view address);  // as in "00:0a:0b:0c:0d:0e"
  Fapi& Bytes(std::string_view hex);
  Fapi& Spares() { return U32(0).U32(0).U32(0); }
  Fapi& PadTo(std::size_t length, char byte = '\0');  // cuts a longer signal off
  Fapi& Bulk(std::string_view hex);
  Fapi& BulkBytes(std::string bytes);

  const std::string& signal() const { return signal_; }
  const std::string& bulk() const { return bulk_; }

 private:
  Fapi& Append(std::uint32_t value, std::size_t width);

  std::string signal_;
  std::string bulk_;
};

class Log {
 public:
  static constexpr std::uint32_t kHeaderMagic = 0x1289ABEF;
  static constexpr std::uint32_t kEventMagic = 0x13572467;
  static constexpr std::uint32_t kSignalMagic = 0x13572468;

  Log& Word(std::uint32_t word);
  Log& Words(std::initializer_list<std::uint32_t> words);
  Log& Bytes(std::string_view bytes);
  Log& Header(std::string_view hip_version);
  Log& TimeRef(std::uint32_t seconds);
  Log& TimeRef(std::uint32_t seconds, std::uint32_t uptime, std::chrono::milliseconds time = 0ms);
  Log& Load(std::chrono::milliseconds time);
  Log& Unload(std::chrono::milliseconds time);
  Log& Signal(std::chrono::milliseconds time, const Fapi& signal);
  // A record with a signal length of its own.
  Log& Record(std::chrono::milliseconds time, std::string_view payload,
              std::uint32_t signal_length);

  const std::string& bytes() const { return bytes_; }
  // Where each header and record so far ends.
  const std::vector<std::size_t>& ends() const { return ends_; }

 private:
  Log& End();

  std::string bytes_;
  std::vector<std::size_t> ends_;
};

#endif  // VRKT_TESTS_SUPPORT_LOG_BUILDER_H_
