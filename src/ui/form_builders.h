#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/preferences.h"
#include "platform/form.h"

// What all panes of the settings window are built of, so that they look alike.
namespace pellow::form {

FormElement section(std::string title);
FormElement label(std::string key, std::string text);
FormElement note(std::string key, std::string_view text);

// A control beside its title, which also names it for assistive programs.
FormElement row(std::string title, FormElement control);

FormElement button(std::string key, std::string title, std::function<void()> onClick);

// Show a preference, and write it as soon as the user operates them.
FormElement checkBox(Preferences& preferences, const Preference<bool>& preference,
                     std::string title);
// The titles are those of the cases, in order.
template <class Case>
FormElement popUpButton(Preferences& preferences, const Preference<Case>& preference,
                        std::vector<std::string> titles) {
  const auto selected = static_cast<std::size_t>(std::to_underlying(preferences.value(preference)));
  return {std::string(preference.key),
          PopUpButton{.titles = std::move(titles),
                      .selected = selected,
                      .onChosen = [&preferences, &preference](std::size_t index) {
                        preferences.set(preference, static_cast<Case>(index));
                      }}};
}
// `slider.value` is what to show of the stored value.
FormElement slider(Preferences& preferences, const Preference<double>& preference, Slider slider);

}  // namespace pellow::form
