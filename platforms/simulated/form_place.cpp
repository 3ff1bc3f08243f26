#include "platforms/simulated/form_place.h"

#include <algorithm>

#include <fmt/ranges.h>

namespace pellow::simulated {
namespace {

void collect(const std::vector<FormElement>& elements, bool areEnabled, bool areInRow,
             std::vector<FormPlace>& places) {
  std::string label;
  for (const auto& each : elements) {
    const bool isEnabled = areEnabled && each.isEnabled;
    places.push_back({&each, isEnabled, label});
    if (const auto* row = std::get_if<FormRow>(&each.content))
      collect(row->elements, isEnabled, true, places);
    if (const auto* text = std::get_if<FormText>(&each.content); text && areInRow)
      label = text->text;
  }
}

struct Title {
  std::string operator()(const CheckBox& box) const { return box.title; }
  std::string operator()(const RadioButton& button) const { return button.title; }
  std::string operator()(const PushButton& button) const { return button.title; }
  template <class Other>
  std::string operator()(const Other&) const {
    return {};
  }
};

std::string lineOf(const FormElement& element);

struct Line {
  std::string operator()(const FormText& text) const { return text.text; }
  std::string operator()(const FormStatus& status) const {
    return fmt::format("{} {}", status.symbol, status.text);
  }
  std::string operator()(const PopUpButton& button) const {
    return button.selected ? button.titles.at(*button.selected) + " ▾" : "▾";
  }
  std::string operator()(const CheckBox& box) const {
    return fmt::format("{} {}", box.isOn ? "☑" : "☐", box.title);
  }
  std::string operator()(const RadioButton& button) const {
    return fmt::format("{} {}", button.isOn ? "◉" : "○", button.title);
  }
  std::string operator()(const Slider& slider) const {
    return fmt::format("slider {:g} [{:g}, {:g}]", slider.value, slider.minimum, slider.maximum);
  }
  std::string operator()(const TextField& field) const { return field.text; }
  std::string operator()(const PushButton& button) const {
    return fmt::format("<{}>", button.title);
  }
  std::string operator()(const FormRow& row) const {
    std::vector<std::string> lines;
    for (const auto& each : row.elements) lines.push_back(lineOf(each));
    return fmt::format("{}", fmt::join(lines, "  "));
  }
};

std::string lineOf(const FormElement& element) {
  return std::visit(Line{}, element.content) + (element.isEnabled ? "" : " (disabled)");
}

}  // namespace

std::vector<FormPlace> placesIn(const FormPane& pane) {
  std::vector<FormPlace> places;
  collect(pane.elements, true, false, places);
  return places;
}

bool isCalled(const FormPlace& place, std::string_view name) {
  return place.element->key == name || place.element->accessibleName == name ||
         place.rowLabel == name || std::visit(Title{}, place.element->content) == name;
}

std::vector<std::string> linesOf(const FormPane& pane) {
  std::vector<std::string> lines;
  for (const auto& each : pane.elements) lines.push_back(lineOf(each));
  return lines;
}

}  // namespace pellow::simulated
