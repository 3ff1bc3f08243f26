#include "ui/form_builders.h"

#include <utility>
#include <variant>

namespace pellow::form {
namespace {

constexpr double sliderWidth = 200;  // points

struct Title {
  std::string operator()(const PushButton& button) const { return button.title; }
  template <class Other>
  std::string operator()(const Other&) const {
    return {};
  }
};

// What a button says is the value of its row.
std::string nameInRow(const std::string& title, const FormContent& control) {
  const auto own = std::visit(Title{}, control);
  return own.empty() ? title : title + ": " + own;
}

}  // namespace

FormElement section(std::string title) {
  return {title + "-section", FormText{title, FormTextStyle::section}};
}

FormElement label(std::string key, std::string text) {
  return {std::move(key), FormText{std::move(text)}};
}

FormElement note(std::string key, std::string_view text) {
  return {std::move(key) + "-note", FormText{std::string(text), FormTextStyle::secondary}};
}

FormElement row(std::string title, FormElement control) {
  control.accessibleName = nameInRow(title, control.content);
  return {control.key + "-row",
          FormRow{{label(control.key + "-title", std::move(title)), std::move(control)}}};
}

FormElement button(std::string key, std::string title, std::function<void()> onClick) {
  return {std::move(key), PushButton{std::move(title), std::move(onClick)}};
}

FormElement checkBox(Preferences& preferences, const Preference<bool>& preference,
                     std::string title) {
  return {std::string(preference.key),
          CheckBox{.title = std::move(title),
                   .isOn = preferences.value(preference),
                   .onToggled = [&preferences, &preference](bool isOn) {
                     preferences.set(preference, isOn);
                   }}};
}

FormElement slider(Preferences& preferences, const Preference<double>& preference, Slider slider) {
  slider.onChanged = [&preferences, &preference](double value) {
    preferences.set(preference, value);
  };
  return {.key = std::string(preference.key), .content = std::move(slider), .width = sliderWidth};
}

}  // namespace pellow::form
