#ifndef VRKT_FAPI_HIP_VERSION_TAGS_H_
#define VRKT_FAPI_HIP_VERSION_TAGS_H_

#include <cstddef>
#include <cstdint>

// The versions of the host interface protocol, one letter per version, in ascending
// order. The rows of the vocabulary use these letters. The tool never prints them.
// src/hip/hip_versions.cc has the version number of each letter.
enum class HipVersionTag : std::uint8_t {
  A,  // 13.1.0
  B,  // 13.2.0
  C,  // 13.3.0
  D,  // 14.0.0
  E,  // 14.0.4
  F,  // 14.0.6
  G,  // 14.1.8
  H,  // 14.2.9
  I,  // 14.3.10
  J,  // 14.4.11
  K,  // 14.4.12
  L,  // 14.5.12
};

inline constexpr HipVersionTag kLastHipVersionTag = HipVersionTag::L;
inline constexpr std::size_t kHipVersionCount = static_cast<std::size_t>(kLastHipVersionTag) + 1;

constexpr char GetTagLetter(std::size_t version) { return static_cast<char>('A' + version); }

// A set of versions. Tables write it as in "A-D,F,H-": single tags and ranges in
// ascending order, separated by commas. A range without an end includes the last
// version, so a new version starts as a copy of the one before it. Any other text does
// not compile.
class HipVersionSet {
 public:
  constexpr HipVersionSet() = default;
  // Not explicit, so that a row can give its versions as a string literal.
  // cppcheck-suppress noExplicitConstructor
  consteval HipVersionSet(const char* text) {  // NOLINT(google-explicit-constructor)
    std::size_t next_allowed = 0;
    for (;;) {
      const std::size_t first = ParseTag(*text++);
      std::size_t last = first;
      if (*text == '-') {
        ++text;
        if (*text == '\0') {
          last = kHipVersionCount - 1;
        } else {
          last = ParseTag(*text++);
          if (last <= first) throw "a range of version tags must ascend, as in \"A-C\"";
        }
      }
      if (first < next_allowed) throw "version tags must ascend, as in \"A-D,F,H-\"";
      for (std::size_t version = first; version <= last; ++version) bits_ |= Bit(version);
      next_allowed = last + 1;
      if (*text == '\0') return;
      if (*text++ != ',') throw "version tags are single letters and ranges, separated by commas";
    }
  }

  constexpr bool Contains(std::size_t version) const { return (bits_ & Bit(version)) != 0; }
  constexpr bool Contains(HipVersionTag tag) const {
    return Contains(static_cast<std::size_t>(tag));
  }
  constexpr bool ContainsAll(HipVersionSet other) const {
    return (bits_ & other.bits_) == other.bits_;
  }
  constexpr bool Overlaps(HipVersionSet other) const { return (bits_ & other.bits_) != 0; }
  constexpr void Add(HipVersionSet other) { bits_ |= other.bits_; }

 private:
  static_assert(kHipVersionCount <= 16, "bits_ holds sixteen versions: widen it");

  static constexpr std::uint16_t Bit(std::size_t version) {
    return static_cast<std::uint16_t>(1U << version);
  }
  static consteval std::size_t ParseTag(char letter) {
    if (letter < 'A' || letter >= GetTagLetter(kHipVersionCount)) throw "unknown version tag";
    return static_cast<std::size_t>(letter - 'A');
  }

  std::uint16_t bits_ = 0;
};

#endif  // VRKT_FAPI_HIP_VERSION_TAGS_H_
