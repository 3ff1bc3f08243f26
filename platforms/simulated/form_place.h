#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <fmt/format.h>

#include "platform/form.h"

namespace pellow::simulated {

// An element of a pane, wherever in its rows, as a user finds it.
struct FormPlace {
  const FormElement* element = nullptr;
  bool isEnabled = true;  // and so is every row that it stands in
  std::string rowLabel;   // the text before it in its row
};

// The elements of a pane in reading order, rows opened up.
std::vector<FormPlace> placesIn(const FormPane& pane);

// Whether a user, or a test, could mean the element by this name: its key, its title, its
// name for assistive programs, or the text before it in its row.
bool isCalled(const FormPlace& place, std::string_view name);

// The only element of this kind and name; keys win over other names. Throws when there is none, or
// more.
template <class Control>
FormPlace placeOf(const FormPane& pane, std::string_view name) {
  std::vector<FormPlace> found;
  for (auto& place : placesIn(pane)) {
    if (!std::holds_alternative<Control>(place.element->content)) continue;
    if (place.element->key == name) return place;
    if (isCalled(place, name)) found.push_back(std::move(place));
  }
  if (found.size() != 1)
    throw std::out_of_range(
        fmt::format("{} elements \"{}\" of this kind in {}", found.size(), name, pane.label));
  return found.front();
}

// One line an element, as a user reads them:
//
//   When pellowing  Minimize to Dock ▾      Size  slider 40 [20, 72]
//   ☑ Show window titles                    Zone 1  Left edge ▾  ☐ Name  ◉ Default
//   <Add Zone> (disabled)                   checkmark.circle.fill Granted
std::vector<std::string> linesOf(const FormPane& pane);

}  // namespace pellow::simulated
