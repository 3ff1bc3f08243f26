#include "platforms/macos/windows/form_row.h"

namespace pellow {

RowControl::RowControl(NSStackView* stack) : FormControl(stack), stack_(stack), elements_(stack) {
  stack_.alignment = NSLayoutAttributeCenterY;
}

void RowControl::showContent(const FormContent& content, bool isEnabled) {
  const auto& row = std::get<FormRow>(content);
  if (stack_.spacing != row.spacing) stack_.spacing = row.spacing;
  elements_.show(row.elements, isEnabled);
}

TextControl* RowControl::title() const {
  const auto& controls = elements_.controls();
  if (controls.size() < 2 || dynamic_cast<TextControl*>(controls[1].get())) return nullptr;
  auto* const text = dynamic_cast<TextControl*>(controls[0].get());
  return text && text->style() == FormTextStyle::body ? text : nullptr;
}

}  // namespace pellow
