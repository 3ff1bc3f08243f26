#pragma once

#include <QWidget>
#include <string>
#include <utility>

#include "platform/form.h"

namespace pellow {

// An element of a form on the screen. Every derived class is also a widget, owned by the widget it
// was made in. Main thread.
class FormControl {
 public:
  static FormControl& make(const FormElement& element, QWidget& parent);

  virtual ~FormControl() = default;

  virtual QWidget& widget() = 0;

  // Whether the element has this one's key and kind.
  bool isOf(const FormElement& element) const;

  // Whether it explains what stands above it.
  virtual bool isNote() const { return false; }

  // Shows an element for which `isOf` holds.
  void show(const FormElement& element);

  // The tab key comes to it after this widget; answers the last widget in it.
  virtual QWidget* setTabOrder(QWidget* before);

  // The user leaves it: a text field tells what was typed.
  virtual void finishEditing() {}

  // Hides it, and deletes it once its own work is done; it tells nothing more.
  void retire();

 protected:
  // Must leave alone what already looks the same.
  virtual void showContent(const FormContent& content) = 0;
  virtual void retireParts() {}
  virtual void showName(const QString& name);

  // Runs the callback of what the user did. It may show another form or end the window.
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
