#include "hip/hip_versions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

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

template <std::size_t... kIndex>
consteval std::array<HipVersionEntry, kHipVersionCount> MakeTable(
    std::index_sequence<kIndex...> /*indices*/) {
  return {{{kHipVersionNames[kIndex].tag, kHipVersionNames[kIndex].dotted,
            PackVersion(kHipVersionNames[kIndex].dotted),
            &DecodeSignalOfVersion<kHipVersionNames[kIndex].tag>, kLinkTypeUser0}...}};
}

}  // namespace

constexpr std::array<HipVersionEntry, kHipVersionCount> HipVersionTable =
    MakeTable(std::make_index_sequence<kHipVersionCount>());

namespace {

consteval bool TagsAndVersionsAscend() {
  for (std::size_t i = 0; i < kHipVersionCount; ++i) {
    if (GetIndex(HipVersionTable[i].tag) != i) return false;
    if (i > 0 && HipVersionTable[i].version <= HipVersionTable[i - 1].version) return false;
  }
  return true;
}
static_assert(TagsAndVersionsAscend(),
              "kHipVersionNames has each tag once, and tags and versions ascend");

}  // namespace

bool SelectHipVersion(std::uint32_t hip_version, const HipVersionEntry*& hipCursor) {
  const HipVersionEntry* const end = HipVersionTable.data() + HipVersionTable.size();
  const HipVersionEntry* const found = std::find_if(
      hipCursor, end, [&](const HipVersionEntry& entry) { return entry.version == hip_version; });
  if (found == end) return false;
  hipCursor = found;
  return true;
}
