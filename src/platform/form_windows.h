#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/form.h"

namespace pellow {

// An ordinary window with a tab for every pane of a form. Closing it only hides it.
class FormWindow {
 public:
  virtual ~FormWindow() = default;

  // Shows this form from now on; the pane at the selected index stays selected where there is one.
  // May be called by what an element of the form before does.
  virtual void setForm(Form form) = 0;

  // Shows the window in front, with the keyboard; brings the process to the front.
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
