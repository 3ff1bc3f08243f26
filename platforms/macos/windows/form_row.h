#pragma once

#include "platforms/macos/windows/form_elements.h"
#include "platforms/macos/windows/form_texts.h"

namespace pellow {

// Elements side by side.
class RowControl final : public FormControl {
 public:
  RowControl() : RowControl([NSStackView stackViewWithViews:@[]]) {}

  // The text at the start of the row, if a control follows it.
  TextControl* title() const;

 protected:
  void showContent(const FormContent& content, bool isEnabled) override;

 private:
  explicit RowControl(NSStackView* stack);

  NSStackView* stack_;
  FormElements elements_;
};

}  // namespace pellow
