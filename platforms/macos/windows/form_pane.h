#pragma once

#import <AppKit/AppKit.h>

#include <vector>

#include "platforms/macos/windows/form_elements.h"

namespace pellow {

// A pane of a form: its elements from top to bottom, which scroll when they are too tall. Main
// thread.
class FormPaneView {
 public:
  FormPaneView();
  ~FormPaneView();
  FormPaneView(const FormPaneView&) = delete;
  FormPaneView& operator=(const FormPaneView&) = delete;

  void showElements(const std::vector<FormElement>& elements);

  NSView* view() const { return scroller_; }

  // Points; with all of it in sight.
  NSSize fittingSize() const;

 private:
  void alignTitles();

  NSStackView* stack_;
  NSScrollView* scroller_;
  FormElements elements_;
};

}  // namespace pellow
