#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/form.h"

namespace pellow {

// An ordinary window with a tab for every pane of a form. Closing it only hides it, and gives the
// keyboard back as the last alert does.
class FormWindow {
 public:
  virtual ~FormWindow() = default;

  // Shows this form from now on; the selected index stays selected if the new form has such a pane.
  // May be called from a callback of the form shown before.
  virtual void setForm(Form form) = 0;

  // Brings the process and this window to the front, with the keyboard.
  virtual void present() = 0;
  virtual bool isVisible() const = 0;

  // Called each time the user closes the window.
  std::function<void()> onClosed;
};

// Main thread.
class FormWindows {
 public:
  virtual ~FormWindows() = default;

  // A hidden window. `name` tells other programs what it is: "pellow-settings".
  virtual std::unique_ptr<FormWindow> makeWindow(std::string name, std::string title) = 0;
};

}  // namespace pellow
