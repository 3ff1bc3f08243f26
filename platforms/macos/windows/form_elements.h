#pragma once

#import <AppKit/AppKit.h>

#include <memory>
#include <vector>

#include "platforms/macos/windows/form_control.h"

namespace pellow {

// The elements of a pane or of a row, one after another in a stack view. Main thread.
class FormElements {
 public:
  explicit FormElements(NSStackView* stack) : stack_(stack) {}

  // Elements whose keys remain keep their controls, wherever they go.
  void show(const std::vector<FormElement>& elements, bool areInEnabled);

  const std::vector<std::unique_ptr<FormControl>>& controls() const { return controls_; }

 private:
  void arrange();

  NSStackView* stack_;
  std::vector<std::unique_ptr<FormControl>> controls_;
};

}  // namespace pellow
