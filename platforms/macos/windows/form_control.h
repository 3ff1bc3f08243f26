#pragma once

#import <AppKit/AppKit.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "platform/form.h"

namespace pellow {

// An element of a form on the screen. Owns its view, which leaves the window with it. Main thread.
class FormControl {
 public:
  static std::unique_ptr<FormControl> make(const FormElement& element);

  virtual ~FormControl();
  FormControl(const FormControl&) = delete;
  FormControl& operator=(const FormControl&) = delete;

  NSView* view() const { return view_; }

  // Whether the element has this one's key and kind.
  bool isOf(const FormElement& element) const;

  // Shows an element for which `isOf` holds. `isInEnabled`: whether all rows around it are enabled.
  void show(const FormElement& element, bool isInEnabled);

 protected:
  explicit FormControl(NSView* view);

  // Must leave alone what already looks the same.
  virtual void showContent(const FormContent& content, bool isEnabled) = 0;

  // What assistive programs call it; nil: its title.
  virtual void setName(NSString* name) { (void)name; }

 private:
  NSView* view_;
  NSLayoutConstraint* width_ = nil;
  std::string key_;
  std::size_t kind_ = 0;
  std::string name_;
};

// Changes a text only if it differs, so that a selection in it survives.
void showText(NSTextField* field, const std::string& text);

// For a control that has no width of its own, unless the form says one. Points.
void suggestWidth(NSView* view, CGFloat width);

// Runs the callback of what the user did. It may show another form or end the window, and its
// caller with them: do it last.
template <class Callback, class... Arguments>
void report(const Callback& callback, Arguments&&... arguments) {
  if (const auto kept = callback) kept(std::forward<Arguments>(arguments)...);
}

}  // namespace pellow
