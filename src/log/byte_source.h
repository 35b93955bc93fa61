#ifndef VRKT_LOG_BYTE_SOURCE_H_
#define VRKT_LOG_BYTE_SOURCE_H_

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <utility>

// The bytes of a log, read forward through a buffer. A read takes what the descriptor has and
// waits only for bytes that are asked for, so the end of a pipe's data delays nothing.
//
// The stream library's buffers are smaller, and they are behind locks. (Its unlocked calls take
// a function call for each word of a record.)
class ByteSource {
 public:
  // Reads at least one and at most `size` bytes, as read(2) does. Returns their number, 0 at the
  // end, or -1 after a failure.
  using ReadFunction = std::function<ssize_t(void* bytes, std::size_t size)>;

  // Does not take ownership of the descriptor. A read that an interrupt ends has failed.
  explicit ByteSource(int descriptor);
  explicit ByteSource(ReadFunction read) : read_(std::move(read)) {}
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  // Reads `size` bytes. Returns the number of bytes read, which is lower only at the end or after
  // a failure.
  std::size_t Read(std::uint8_t* bytes, std::size_t size) {
    if (size > end_ - next_) return ReadMore(bytes, size);
    std::memcpy(bytes, buffer_.data() + next_, size);
    next_ += size;
    return size;
  }

  // Whether the last read failed. If not, a read that came short has reached the end.
  bool has_failed() const { return has_failed_; }

  // The number of bytes from where the reading began to the next one.
  std::uint64_t offset() const { return offset_of_end_ - (end_ - next_); }

  // Continues at another offset. Reads nothing if the buffer has it. Returns false if the source
  // is no descriptor of a file, or if the file ends before the offset.
  bool Seek(std::uint64_t offset);

  // Sets the descriptor's offset to the next byte, for programs that read the same file
  // afterwards. Does nothing if it is a pipe.
  void ReturnUnread();

 private:
  static constexpr std::size_t kBufferSize = 32768;

  std::size_t ReadMore(std::uint8_t* bytes, std::size_t size);
  bool MoveDescriptor(std::uint64_t offset) const;

  ReadFunction read_;
  int descriptor_ = -1;
  bool has_failed_ = false;
  std::uint64_t offset_of_end_ = 0;  // of the buffer's end, which is the descriptor's offset
  std::size_t next_ = 0;             // in the buffer
  std::size_t end_ = 0;
  std::array<std::uint8_t, kBufferSize> buffer_;
};

#endif  // VRKT_LOG_BYTE_SOURCE_H_
