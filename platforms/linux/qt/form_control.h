#pragma once

#include <QWidget>
#include <string>
#include <utility>

#include "platform/form.h"

namespace pellow {

// An element of a form on the screen. Every class that derives from it is a widget as well, and
// belongs to the widget that it was made in. Main thread.
class FormControl {
 public:
  static FormControl& make(const FormElement& element, QWidget& parent);

  virtual ~FormControl() = default;

  virtual QWidget& widget() = 0;

  // Whether the element is this one: of the same key and kind.
  bool isOf(const FormElement& element) const;

  // Shows an element that this one is of.
  void show(const FormElement& element);

  // The user turns away from it: a text field tells what was typed.
  virtual void finishEditing() {}

  // Hides it and deletes it once its own work is done; it tells nothing any more.
  void retire();

 protected:
  // Must leave alone what looks the same already.
  virtual void showContent(const FormContent& content) = 0;
  virtual void retireParts() {}

  // Runs what the user's doing is to cause. It may show another form, or end the window.
  template <class Callback, class... Arguments>
  void call(const Callback& callback, Arguments&&... arguments) {
    if (isRetired_ || !callback) return;
    const auto kept = callback;
    kept(std::forward<Arguments>(arguments)...);
  }

 private:
  std::string key_;
  std::size_t kind_ = 0;
  bool isRetired_ = false;
};

}  // namespace pellow
