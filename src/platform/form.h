#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

// The content of a settings window as data. Controls keep no state of their own: they show what the
// form says and report what the user did. A platform compares a new form with the one it shows and
// changes only what differs, so that a drag on a slider and the keyboard focus survive.

namespace pellow {

enum class FormTextStyle {
  section,    // bold, 13 points, with air above
  body,       // 13 points
  secondary,  // 11 points, in the secondary label colour
};

struct FormText {
  std::string text;  // breaks into lines at 420 points
  FormTextStyle style = FormTextStyle::body;

  bool operator==(const FormText&) const = default;
};

// A state in a word, with a symbol; both tinted to match.
struct FormStatus {
  enum class Tint { good, warning };

  std::string symbol;
  std::string text;
  Tint tint = Tint::good;

  bool operator==(const FormStatus&) const = default;
};

struct PopUpButton {
  std::vector<std::string> titles;
  std::optional<std::size_t> selected;  // absent: nothing is chosen yet
  std::function<void(std::size_t index)> onChosen;
};

struct CheckBox {
  std::string title;
  bool isOn = false;
  std::function<void(bool isOn)> onToggled;
};

struct RadioButton {
  std::string title;
  bool isOn = false;
  std::function<void()> onChosen;
};

struct Slider {
  double minimum = 0;
  double maximum = 1;
  double value = 0;
  int tickMarks = 0;                            // for show; values in between can be chosen
  std::function<void(double value)> onChanged;  // also during a drag
};

struct TextField {
  std::string text;
  // The user pressed Return or left the field. The field then shows the form's `text` again, this
  // form's or the next one's.
  std::function<void(const std::string& text)> onEnded;
};

struct PushButton {
  std::string title;
  std::function<void()> onClick;
};

struct FormElement;

// Side by side, vertically centred.
struct FormRow {
  std::vector<FormElement> elements;
  double spacing = 10;  // points
};

using FormContent = std::variant<FormText, FormStatus, PopUpButton, CheckBox, RadioButton, Slider,
                                 TextField, PushButton, FormRow>;

struct FormElement {
  std::string key;  // unique within its pane and stable from one form to the next
  FormContent content;
  bool isEnabled = true;
  std::optional<double> width;  // points; absent: as wide as it needs
  std::string tooltip;
  // What assistive programs call a control; empty: its title.
  std::string accessibleName;
};

// One tab of the window: its elements from top to bottom, in a scroller that hides itself.
struct FormPane {
  std::string label;
  std::vector<FormElement> elements;
};

struct Form {
  std::vector<FormPane> panes;
};

}  // namespace pellow
