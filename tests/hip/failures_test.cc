#include "hip/failures.h"

#include <gtest/gtest.h>

#include <string>

#include "fapi/vocabulary.h"
#include "hip/record.h"
#include "log_builder.h"
#include "support/padded_payload.h"

namespace {

TEST(Failures, AreKnownByOneField) {
  const struct {
    Fapi signal;
    std::string field;  // empty if the signal is no failure
  } kCases[] = {
      {Fapi(0x210B).U16(1, 0), ""},  // success
      {Fapi(0x210B).U16(1, 0x8007), "result_code"},
      {Fapi(0x210B).U16(1, 0xFFFE), "result_code"},  // without a label
      {Fapi(0x1100).U16(1, 0), ""},
      {Fapi(0x1100).U16(1, 1), "transmission_status"},
      {Fapi(0x200E).U16(1), "reason_code"},  // whatever the reason
      {Fapi(0x1301).U16(1), ""},             // has a reason_code, too
  };
  for (const auto& c : kCases) {
    const PaddedPayload payload(Fapi(c.signal).PadTo(60).signal());
    const SignalView view = UnderstandSignal(kLastHipVersionTag, {payload.span(), {}, {}}).signal;
    ASSERT_NE(view.layout, nullptr);
    const CompiledField* const field = FindFailure(view);
    EXPECT_EQ(field == nullptr ? "" : GetText(field->name).text(), c.field)
        << GetText(view.layout->name).text();
  }
}

// What FindFailure and the plugin rely on.
TEST(Failures, NoLayoutHasTwo) {
  for (const CompiledSignal& layout : ListLayouts()) {
    int count = 0;
    for (const CompiledField& field : GetFields(layout)) {
      const auto name = GetText(field.name).text();
      for (const FailureRule& rule : kFailureRules) {
        if (name != rule.field || !GetText(layout.name).text().starts_with(rule.signals)) continue;
        EXPECT_EQ(field.form, FieldRenderer::kEnum16);
        ++count;
      }
    }
    EXPECT_LE(count, 1) << GetText(layout.name).text();
  }
}

}  // namespace
