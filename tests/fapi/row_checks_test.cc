// Tests at compile time that mistakes in versions, labels and rows do not compile, and
// that correct ones do.

#include <array>
#include <cstddef>
#include <type_traits>

#include "fapi/enum_table.h"
#include "fapi/enumerations/data_path.h"
#include "fapi/hip_version_tags.h"
#include "fapi/signal_layout.h"

namespace {

template <auto kMake>
concept Compiles = requires {
  std::bool_constant<(kMake(), true)>{};
};

#define COMPILES(...) (Compiles<[]() consteval { static_cast<void>(__VA_ARGS__); }>)
#define ACCEPT(...) static_assert(COMPILES(__VA_ARGS__))
#define REFUSE(...) static_assert(!COMPILES(__VA_ARGS__))

template <std::size_t kLength>
consteval std::array<char, kLength + 1> MakeText() {
  std::array<char, kLength + 1> text{};
  for (std::size_t i = 0; i < kLength; ++i) text[i] = 'a';
  return text;
}

// Versions.
constexpr std::array kFirstUnknownTag = {GetTagLetter(kHipVersionCount), '\0'};
ACCEPT(HipVersionSet("A"));
ACCEPT(HipVersionSet("A-B,C,E-"));
REFUSE(HipVersionSet(""));
REFUSE(HipVersionSet("@"));
REFUSE(HipVersionSet(kFirstUnknownTag.data()));
REFUSE(HipVersionSet("A,"));
REFUSE(HipVersionSet("A B"));
REFUSE(HipVersionSet("AB"));
REFUSE(HipVersionSet("B,A"));
REFUSE(HipVersionSet("A,A"));
REFUSE(HipVersionSet("B-B"));
REFUSE(HipVersionSet("B-A"));
REFUSE(HipVersionSet("A-C,C"));
REFUSE(HipVersionSet("A-,C"));

// Labels.
constexpr auto kLongestLabel = MakeText<kMaxLabelLength>();
constexpr auto kTooLongLabel = MakeText<kMaxLabelLength + 1>();
ACCEPT(Label(0xFFFF, " ~", "A"));
ACCEPT(Label(0, kLongestLabel.data(), "A"));
REFUSE(Label(0x10000, " ~", "A"));
REFUSE(Label(0, kTooLongLabel.data(), "A"));
REFUSE(Label(0, "", "A"));
REFUSE(Label(0, "a\x1F", "A"));
REFUSE(Label(0, "a\x7F", "A"));

constexpr EnumLabel kLabels[] = {Label(1, "a", "A"), Label(1, "b", "B-"), Label(2, "c", "A-")};
constexpr EnumLabel kUnsortedLabels[] = {Label(1, "a", "A"), Label(0, "b", "A")};
constexpr EnumLabel kDoubledLabel[] = {Label(1, "a", "A"), Label(1, "b", "A")};
constexpr EnumLabel kDoubledApart[] = {Label(1, "a", "A,C"), Label(1, "b", "B"),
                                       Label(1, "c", "C")};
static_assert(enum_table_checks::FindUnsortedLabel(kLabels).line == 0);
static_assert(enum_table_checks::FindSecondLabel(kLabels).line == 0);
static_assert(enum_table_checks::FindUnsortedLabel(kUnsortedLabels).line != 0);
static_assert(enum_table_checks::FindSecondLabel(kDoubledLabel).line != 0);
static_assert(enum_table_checks::FindSecondLabel(kDoubledApart).line != 0);

// Names.
constexpr auto kLongestName = MakeText<kMaxNameLength>();
constexpr auto kTooLongName = MakeText<kMaxNameLength + 1>();
ACCEPT(Signal("a_b_0_9_z", 0xFFFF, "A", Min(10)));
ACCEPT(Signal(kLongestName.data(), 0, "A", Min(10)));
REFUSE(Signal("a_b_0_9_z", 0x10000, "A", Min(10)));
REFUSE(Signal(kTooLongName.data(), 0, "A", Min(10)));
REFUSE(Signal("", 0, "A", Min(10)));
REFUSE(Signal("a_Req", 0, "A", Min(10)));
REFUSE(Signal("a req", 0, "A", Min(10)));
REFUSE(Signal("a", 0, "A", Min(12), U16("b:")));
REFUSE(Signal("a", 0, "A", Min(10), Dump("b:")));

// Lengths and offsets.
ACCEPT(Signal("a", 0, "A", Min(14), U16("b"), U16("c")));
ACCEPT(Signal("a", 0, "A", MinDiffersFromEnd(10), U16("b")));
ACCEPT(Signal("a", 0, "A", MinDiffersFromEnd(255), U16("b")));
ACCEPT(Signal("a", 0, "A", Min(14), U16("b").At(10), U16("c").At(12)));
ACCEPT(Signal("a", 0, "A", Min(255), U8("b").At(254)));
REFUSE(Signal("a", 0, "A", Min(13), U16("b"), U16("c")));
REFUSE(Signal("a", 0, "A", Min(15), U16("b"), U16("c")));
REFUSE(Signal("a", 0, "A", MinDiffersFromEnd(14), U16("b"), U16("c")));
REFUSE(Signal("a", 0, "A", MinDiffersFromEnd(9), U16("b")));
REFUSE(Signal("a", 0, "A", MinDiffersFromEnd(256), U16("b")));
REFUSE(Signal("a", 0, "A", Min(13), U16("b"), U16("c").At(11)));
REFUSE(Signal("a", 0, "A", Min(11), U16("b").At(9)));
REFUSE(Signal("a", 0, "A", Min(12), U16("b").At(0)));
REFUSE(Signal("a", 0, "A", MinDiffersFromEnd(255), U8("b").At(255)));

// Counts.
ACCEPT(Signal("a", 0, "A", Min(10 + 2 * kMaxWords), Words("b", kMaxWords)));
ACCEPT(Signal("a", 0, "A", Min(10), Dump("b"), Dump("c")));
REFUSE(Signal("a", 0, "A", Min(12 + 2 * kMaxWords), Words("b", kMaxWords + 1)));
REFUSE(Signal("a", 0, "A", Min(10), Dump("b"), Dump("c"), Dump("d")));

// Enumerations. kBulkDataDescriptor has no labels before D.
ACCEPT(Signal("a", 0, "D-", Min(12), Enum("b", kBulkDataDescriptor)));
REFUSE(Signal("a", 0, "C-", Min(12), Enum("b", kBulkDataDescriptor)));

}  // namespace
