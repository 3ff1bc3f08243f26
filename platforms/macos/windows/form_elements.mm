#include "platforms/macos/windows/form_elements.h"

#include <algorithm>
#include <utility>

namespace pellow {

void FormElements::show(const std::vector<FormElement>& elements, bool areInEnabled) {
  auto before = std::exchange(controls_, {});
  for (const auto& element : elements) {
    const auto known = std::ranges::find_if(
        before, [&](const auto& control) { return control && control->isOf(element); });
    controls_.push_back(known == before.end() ? FormControl::make(element) : std::move(*known));
    controls_.back()->show(element, areInEnabled);
  }
  before.clear();
  arrange();
}

// Moves no view that already stands in its place: a view that leaves its window loses the keyboard
// and the mouse.
void FormElements::arrange() {
  NSInteger index = 0;
  for (const auto& control : controls_) {
    NSArray<NSView*>* const shown = stack_.arrangedSubviews;
    NSView* const view = control->view();
    const bool isInPlace = index < static_cast<NSInteger>(shown.count) &&
                           shown[static_cast<NSUInteger>(index)] == view;
    if (!isInPlace) [stack_ insertArrangedSubview:view atIndex:index];
    ++index;
  }
}

}  // namespace pellow
