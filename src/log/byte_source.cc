#include "log/byte_source.h"

#include <unistd.h>

#include <algorithm>

ByteSource::ByteSource(int descriptor)
    : read_(
          [descriptor](void* bytes, std::size_t size) { return ::read(descriptor, bytes, size); }),
      descriptor_(descriptor) {}

std::size_t ByteSource::ReadMore(std::uint8_t* bytes, std::size_t size) {
  std::size_t done = 0;
  for (;;) {
    const std::size_t count = std::min(size - done, end_ - next_);
    std::memcpy(bytes + done, buffer_.data() + next_, count);
    next_ += count;
    done += count;
    if (done == size) return size;
    // What would fill the buffer is not copied.
    constexpr std::size_t kLargestRead = std::size_t{1} << 30U;
    const bool is_large = size - done >= kBufferSize;
    const ssize_t result = is_large ? read_(bytes + done, std::min(size - done, kLargestRead))
                                    : read_(buffer_.data(), kBufferSize);
    has_failed_ = result < 0;
    if (result <= 0) return done;
    const auto read = static_cast<std::size_t>(result);
    offset_of_end_ += read;
    if (is_large) done += read;
    next_ = 0;
    end_ = is_large ? 0 : read;
  }
}

// The buffer begins at a multiple of its size, so that seeks forward and back in a part of the file
// read it once.
bool ByteSource::Seek(std::uint64_t offset) {
  const std::uint64_t start = offset_of_end_ - end_;
  if (offset < start || offset > offset_of_end_) {
    const std::uint64_t skipped = offset % kBufferSize;
    if (!MoveDescriptor(offset - skipped)) return false;
    const ssize_t result = read_(buffer_.data(), kBufferSize);
    has_failed_ = result < 0;
    end_ = result > 0 ? static_cast<std::size_t>(result) : 0;
    offset_of_end_ = offset - skipped + end_;
    if (end_ < skipped) {  // the file has become shorter, or the read has failed
      next_ = end_;
      return false;
    }
  }
  next_ = end_ - static_cast<std::size_t>(offset_of_end_ - offset);
  return true;
}

void ByteSource::ReturnUnread() {
  if (next_ == end_ || !MoveDescriptor(offset())) return;
  offset_of_end_ = offset();
  end_ = next_;
}

bool ByteSource::MoveDescriptor(std::uint64_t offset) const {
  const auto distance = static_cast<off_t>(offset - offset_of_end_);
  return descriptor_ >= 0 && ::lseek(descriptor_, distance, SEEK_CUR) >= 0;
}
