#include "platforms/linux/qt/form_elements.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace pellow {

void FormElements::show(const std::vector<FormElement>& elements) {
  const auto shown = controls_;
  auto before = std::exchange(controls_, {});
  for (const auto& element : elements) controls_.push_back(&controlFor(element, before));
  if (controls_ != shown) arrange();
  for (auto* const gone : before)
    if (gone) gone->retire();
}

FormControl& FormElements::controlFor(const FormElement& element,
                                      std::vector<FormControl*>& before) {
  const auto known = std::ranges::find_if(
      before, [&](const auto* control) { return control && control->isOf(element); });
  if (known == before.end()) return FormControl::make(element, parent_);
  auto& control = *std::exchange(*known, nullptr);
  control.show(element);
  return control;
}

void FormElements::arrange() {
  while (const std::unique_ptr<QLayoutItem> item{layout_.takeAt(0)}) continue;
  for (auto* const control : controls_) {
    if (!layout_.isEmpty() && !control->isNote()) layout_.addSpacing(air_);
    layout_.addWidget(&control->widget(), 0, alignment_);
    control->widget().show();
  }
}

QWidget* FormElements::setTabOrder(QWidget* before) {
  for (auto* const control : controls_) before = control->setTabOrder(before);
  return before;
}

void FormElements::retire() {
  for (auto* const control : controls_) control->retire();
  controls_.clear();
}

}  // namespace pellow
