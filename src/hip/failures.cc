#include "hip/failures.h"

#include <cstddef>
#include <vector>

#include "fapi/vocabulary.h"
#include "hip/field_value.h"

namespace {

std::vector<FailureField> ListFailureFields() {
  std::vector<FailureField> fields;
  for (const CompiledSignal& layout : ListLayouts()) fields.push_back(FindFailureField(layout));
  return fields;
}

}  // namespace

FailureField FindFailureField(const CompiledSignal& layout) {
  for (const CompiledField& field : GetFields(layout)) {
    for (const FailureRule& rule : kFailureRules) {
      if (GetText(field.name).text() == rule.field &&
          GetText(layout.name).text().starts_with(rule.signals)) {
        return {&field, &rule};
      }
    }
  }
  return {};
}

const CompiledField* FindFailure(const SignalView& signal) {
  static const std::vector<FailureField> fields = ListFailureFields();  // by layout
  const FailureField& failure =
      fields[static_cast<std::size_t>(signal.layout - ListLayouts().data())];
  if (failure.field == nullptr) return nullptr;
  const bool has_failed = failure.rule->success.empty() ||
                          ReadField(signal, *failure.field).label.text() != failure.rule->success;
  return has_failed ? failure.field : nullptr;
}
