#ifndef VRKT_FAPI_FIELD_FORMS_H_
#define VRKT_FAPI_FIELD_FORMS_H_

#include <cstddef>
#include <cstdint>
#include <iterator>

// The form of a field: which bytes it has and how its value prints. The code that makes
// a form's value and text is in src/hip/field_value.cc and src/hip/field_rendering.cc.
enum class FieldRenderer : std::uint8_t {
  kU8,
  kU16,
  kU32,
  kI16,
  kI32,
  kX16,
  kX16NoSpace,
  kX32,
  kMac,
  kHex8,
  kWords,
  kEnum16,
  kDump,
};

// It has no pointers, so there is nothing to relocate when the tool starts.
struct FieldForm {
  FieldRenderer form;
  char name[13];       // in the tables of other programs, such as the Wireshark plugin
  std::uint8_t width;  // in bytes; of one word for kWords
  bool has_blank;      // whether a blank is before the field's name
  char before_value[3];
  char after_value[2];
};

// One row per form, in the order of FieldRenderer. Integers are little-endian. The
// comments give the value's text between before_value and after_value.
// clang-format off
inline constexpr FieldForm kFieldForms[] = {
    {FieldRenderer::kU8,         "u8",           1, true,  "",   ""},   // %u
    {FieldRenderer::kU16,        "u16",          2, true,  "",   ""},   // %u
    {FieldRenderer::kU32,        "u32",          4, true,  "",   ""},   // %u
    {FieldRenderer::kI16,        "i16",          2, true,  "",   ""},   // %d
    {FieldRenderer::kI32,        "i32",          4, true,  "",   ""},   // %d
    {FieldRenderer::kX16,        "x16",          2, true,  "0x", ""},   // %.4x
    {FieldRenderer::kX16NoSpace, "x16_no_space", 2, false, "0x", ""},   // %.4x
    {FieldRenderer::kX32,        "x32",          4, true,  "0x", ""},   // %.8x
    {FieldRenderer::kMac,        "mac",          6, true,  "",   ""},   // %.2x per byte, with colons
    {FieldRenderer::kHex8,       "hex8",         8, true,  "0x", ""},   // %.2x per byte
    {FieldRenderer::kWords,      "words",        2, true,  "[",  "]"},  // "0x%.4x " per word
    {FieldRenderer::kEnum16,     "enum16",       2, true,  "",   ""},   // a label, or %u
    {FieldRenderer::kDump,       "dump",         0, true,  "{",  "}"},  // %.2x per byte
};
// clang-format on

constexpr const FieldForm& GetForm(FieldRenderer form) {
  return kFieldForms[static_cast<std::size_t>(form)];
}

consteval bool EachFormHasItsRow() {
  for (const FieldForm& row : kFieldForms) {
    if (&GetForm(row.form) != &row) return false;
  }
  return &GetForm(FieldRenderer::kDump) == std::end(kFieldForms) - 1;
}
static_assert(EachFormHasItsRow(), "kFieldForms has one row per form, in the same order");

#endif  // VRKT_FAPI_FIELD_FORMS_H_
