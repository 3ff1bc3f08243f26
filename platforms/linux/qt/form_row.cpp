#include "platforms/linux/qt/form_row.h"

#include <cmath>

namespace pellow {

RowControl::RowControl(QWidget& parent)
    : QWidget(&parent), layout_(this), elements_(*this, layout_, Qt::AlignVCenter) {
  layout_.setContentsMargins(0, 0, 0, 0);
}

void RowControl::showContent(const FormContent& content) {
  const auto& row = std::get<FormRow>(content);
  const int spacing = static_cast<int>(std::lround(row.spacing));
  if (layout_.spacing() != spacing) layout_.setSpacing(spacing);
  elements_.show(row.elements);
  // Assistive programs read what a pop-up button shows as its name, and its title as its label.
  if (auto* const text = title()) text->setBuddy(&elements_.controls()[1]->widget());
}

TextControl* RowControl::title() const {
  const auto& controls = elements_.controls();
  if (controls.size() < 2 || dynamic_cast<TextControl*>(controls[1])) return nullptr;
  auto* const text = dynamic_cast<TextControl*>(controls[0]);
  return text && text->style() == FormTextStyle::body ? text : nullptr;
}

}  // namespace pellow
