#ifndef VRKT_FAPI_HIP_VERSION_TAGS_H_
#define VRKT_FAPI_HIP_VERSION_TAGS_H_

#include <cstddef>
#include <cstdint>
#include <iterator>

// The versions of the host interface protocol, one letter per version. The rows of the
// vocabulary use these letters. The tool never prints them.
enum class HipVersionTag : std::uint8_t { A, B, C, D, E, F, G, H, I, J, K, L };

struct HipVersionName {
  HipVersionTag tag;
  const char* dotted;  // as printed
};

// One row per tag, in ascending order. The versions are written nowhere else: the table
// of versions, the banner and the package take them from here.
// clang-format off
inline constexpr HipVersionName kHipVersionNames[] = {
    {HipVersionTag::A, "13.1.0"},
    {HipVersionTag::B, "13.2.0"},
    {HipVersionTag::C, "13.3.0"},
    {HipVersionTag::D, "14.0.0"},
    {HipVersionTag::E, "14.0.4"},
    {HipVersionTag::F, "14.0.6"},
    {HipVersionTag::G, "14.1.8"},
    {HipVersionTag::H, "14.2.9"},
    {HipVersionTag::I, "14.3.10"},
    {HipVersionTag::J, "14.4.11"},
    {HipVersionTag::K, "14.4.12"},
    {HipVersionTag::L, "14.5.12"},
};
// clang-format on

inline constexpr std::size_t kHipVersionCount = std::size(kHipVersionNames);
inline constexpr HipVersionTag kLastHipVersionTag = kHipVersionNames[kHipVersionCount - 1].tag;

// A tag as an index of kHipVersionNames and of other tables with one entry per version.
constexpr std::size_t GetIndex(HipVersionTag tag) { return static_cast<std::size_t>(tag); }
constexpr char GetLetter(HipVersionTag tag) { return static_cast<char>('A' + GetIndex(tag)); }

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
      for (std::size_t index = first; index <= last; ++index) bits_ |= Bit(index);
      next_allowed = last + 1;
      if (*text == '\0') return;
      if (*text++ != ',') throw "version tags are single letters and ranges, separated by commas";
    }
  }

  constexpr bool Contains(HipVersionTag tag) const { return (bits_ & Bit(GetIndex(tag))) != 0; }
  constexpr bool ContainsAll(HipVersionSet other) const {
    return (bits_ & other.bits_) == other.bits_;
  }
  constexpr bool Overlaps(HipVersionSet other) const { return (bits_ & other.bits_) != 0; }
  constexpr void Add(HipVersionSet other) { bits_ |= other.bits_; }

 private:
  static_assert(kHipVersionCount <= 16, "bits_ holds sixteen versions: widen it");

  static constexpr std::uint16_t Bit(std::size_t index) {
    return static_cast<std::uint16_t>(1U << index);
  }
  static consteval std::size_t ParseTag(char letter) {
    const auto index = static_cast<std::size_t>(letter - 'A');
    if (letter < 'A' || index >= kHipVersionCount) throw "unknown version tag";
    return index;
  }

  std::uint16_t bits_ = 0;
};

#endif  // VRKT_FAPI_HIP_VERSION_TAGS_H_
