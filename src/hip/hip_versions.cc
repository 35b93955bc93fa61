#include "hip/hip_versions.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "base/program_name.h"

namespace {

// LINKTYPE_USER0 of the pcap link-type registry, for private use.
constexpr std::uint32_t kLinkTypeUser0 = 0x93;

// Reads a decimal number of at most `limit`, and moves `text` past it.
consteval std::uint32_t ParseNumber(const char*& text, std::uint32_t limit) {
  if (*text < '0' || *text > '9') throw "a version is three numbers with dots between them";
  std::uint32_t number = 0;
  for (; *text >= '0' && *text <= '9'; ++text) {
    number = 10 * number + static_cast<std::uint32_t>(*text - '0');
    if (number > limit) throw "a number of a version does not fit its place in the packed version";
  }
  return number;
}

// Packs a dotted version as in a log's header.
consteval std::uint32_t PackVersion(const char* name) {
  std::uint32_t version = ParseNumber(name, 0xFF) << 24U;
  if (*name++ != '.') throw "a version is three numbers with dots between them";
  version |= ParseNumber(name, 0xFF) << 16U;
  if (*name++ != '.') throw "a version is three numbers with dots between them";
  version |= ParseNumber(name, 0xFFFF);
  if (*name != '\0') throw "a version is three numbers with dots between them";
  return version;
}

template <HipVersionTag kTag>
consteval HipVersionEntry MakeEntry(const char* name) {
  return {name, PackVersion(name), &DecodeSignalOfVersion<kTag>, kLinkTypeUser0};
}

}  // namespace

// clang-format off
constexpr std::array<HipVersionEntry, kHipVersionCount> HipVersionTable = {
    MakeEntry<HipVersionTag::A>("13.1.0"),
    MakeEntry<HipVersionTag::B>("13.2.0"),
    MakeEntry<HipVersionTag::C>("13.3.0"),
    MakeEntry<HipVersionTag::D>("14.0.0"),
    MakeEntry<HipVersionTag::E>("14.0.4"),
    MakeEntry<HipVersionTag::F>("14.0.6"),
    MakeEntry<HipVersionTag::G>("14.1.8"),
    MakeEntry<HipVersionTag::H>("14.2.9"),
    MakeEntry<HipVersionTag::I>("14.3.10"),
    MakeEntry<HipVersionTag::J>("14.4.11"),
    MakeEntry<HipVersionTag::K>("14.4.12"),
    MakeEntry<HipVersionTag::L>("14.5.12"),
};
// clang-format on

namespace {

template <std::size_t... kVersion>
consteval bool EachTagHasItsRow(std::index_sequence<kVersion...> /*versions*/) {
  return ((HipVersionTable[kVersion].name != nullptr &&
           HipVersionTable[kVersion].decoder ==
               &DecodeSignalOfVersion<static_cast<HipVersionTag>(kVersion)>)&&...);
}
static_assert(EachTagHasItsRow(std::make_index_sequence<kHipVersionCount>()),
              "each version tag has a row with its own decoder, in order of the tags");

consteval bool VersionsAscend() {
  for (std::size_t version = 1; version < kHipVersionCount; ++version) {
    if (HipVersionTable[version].version <= HipVersionTable[version - 1].version) return false;
  }
  return true;
}
static_assert(VersionsAscend(), "the versions are in ascending order");

}  // namespace

void SelectHipVersion(std::uint32_t hip_version, const HipVersionEntry*& hipCursor) {
  const HipVersionEntry* const end = HipVersionTable.data() + HipVersionTable.size();
  for (; hipCursor != end; ++hipCursor) {
    if (hipCursor->version == hip_version) {
      std::fprintf(stderr, "%s: Log File Hip Version %s detected\n", programName, hipCursor->name);
      return;
    }
  }
  std::fprintf(stderr, "%s: Incompatible hip version(%d.%d.%d) detected in log file header.\n",
               programName, static_cast<int>(hip_version >> 24U),
               static_cast<int>(hip_version >> 16U & 0xFFU),
               static_cast<int>(hip_version & 0xFFFFU));
  std::fprintf(stderr, "%s: This decoder supports hip versions:\n", programName);
  for (const HipVersionEntry& entry : HipVersionTable) {
    std::fprintf(stderr, "%s:      %s\n", programName, entry.name);
  }
  std::exit(-1);
}
