#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/subscription.h"
#include "platform/form_windows.h"
#include "platforms/simulated/desktop_state.h"
#include "platforms/simulated/form_place.h"

namespace pellow::simulated {

class FormWindows;
class System;

// A form window in the hands of its user, who sees the selected pane and nothing else. While it
// shows it is a window of the desktop like any other, owned by the program.
//
// Elements are named by key, by title, by their name for assistive programs, or by the text before
// them in their row. What the user does reaches the program in its main loop, and only if the
// element is still there and enabled by then. Verbs throw when the window does not show, or has no
// such element there, or a disabled one.
class FormWindow final : public pellow::FormWindow {
 public:
  FormWindow(FormWindows& windows, std::string name, std::string title);
  ~FormWindow() override;

  void setForm(Form form) override;
  void present() override;
  bool isVisible() const override;

  const std::string& name() const { return name_; }
  // While it shows; throws when it does not.
  WindowID window() const;

  // What the user sees.
  std::vector<std::string> panes() const;
  const std::string& selectedPane() const;
  const FormPane& pane() const;            // the selected one
  std::vector<std::string> lines() const;  // `linesOf` it
  // The element, for example `control<Slider>("Size").value`.
  template <class Control>
  const Control& control(std::string_view elementName) const {
    return std::get<Control>(placeOf<Control>(pane(), elementName).element->content);
  }
  template <class Control>
  bool isEnabled(std::string_view elementName) const {
    return placeOf<Control>(pane(), elementName).isEnabled;
  }
  // Whether one of the pane's texts and states reads like this.
  bool reads(std::string_view text) const;
  // What a text field shows: what was typed, else what the form says.
  std::string textIn(std::string_view field) const;

  // What the user does.
  void selectPane(std::string_view label);
  void choose(std::string_view popUpButton, std::string_view title);
  void toggle(std::string_view checkBox);
  // A push button or a radio button.
  void press(std::string_view button);
  // Drags the slider there by way of the middle, at most to its end.
  void drag(std::string_view slider, double value);
  // Replaces the field's text; the edit ends with Return, with an edit elsewhere, and when the pane
  // or the window goes.
  void type(std::string_view field, std::string text);
  void pressReturn();
  void close();

 private:
  struct Edit {
    std::string key;
    std::string text;
  };

  // The key of an element that the user can operate now.
  template <class Control>
  std::string operable(std::string_view elementName) const;
  void checkIsVisible() const;
  template <class Control>
  void post(std::string key, std::function<void(const Control&)> deed);
  void endEdit();
  void toFront();
  void gone(WindowID window);

  FormWindows& windows_;
  System& system_;
  std::string name_;
  std::string title_;
  Form form_;
  std::size_t selected_ = 0;
  std::optional<Edit> edit_;
  std::optional<WindowID> window_;
  QuartzRect frame_;  // where it is to show
  std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
  Subscription gone_;
};

}  // namespace pellow::simulated
