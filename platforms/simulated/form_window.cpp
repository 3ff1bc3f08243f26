#include "platforms/simulated/form_window.h"

#include <algorithm>
#include <utility>

#include "platforms/simulated/form_windows.h"

namespace pellow::simulated {
namespace {

constexpr Size windowSize{560, 480};

}  // namespace

FormWindow::FormWindow(FormWindows& windows, std::string name, std::string title)
    : windows_(windows),
      system_(windows.system_),
      name_(std::move(name)),
      title_(std::move(title)),
      gone_(system_.windowGone.add([this](WindowID window) { gone(window); })) {
  windows_.windows_.push_back(this);
}

FormWindow::~FormWindow() {
  std::erase(windows_.windows_, this);
  const auto shown = std::exchange(window_, std::nullopt);
  if (!shown || !system_.state.window(*shown)) return;
  system_.change([&](DesktopState& desktop) { desktop.close(*shown); });
  system_.giveWay();
}

void FormWindow::setForm(Form form) {
  form_ = std::move(form);
  if (selected_ >= form_.panes.size()) selected_ = 0;
  const auto isThere = [&](const FormPlace& place) { return place.element->key == edit_->key; };
  if (edit_ && (form_.panes.empty() || std::ranges::none_of(placesIn(pane()), isThere)))
    edit_ = std::nullopt;
}

void FormWindow::present() {
  if (!system_.portCall("presents {}", name_)) return;
  system_.change([this](DesktopState& desktop) {
    if (!window_ || !desktop.window(*window_)) {
      if (frame_.area() == 0) frame_ = desktop.centred(windowSize);
      window_ = desktop.open({.pid = system_.ownPid(), .title = title_, .frame = frame_});
    }
    desktop.unminimize(*window_);
    desktop.raise(*window_);
    desktop.activate(system_.ownPid());
  });
}

bool FormWindow::isVisible() const {
  const auto* shown = window_ ? system_.state.window(*window_) : nullptr;
  return shown && system_.state.isVisible(*shown);
}

WindowID FormWindow::window() const {
  checkIsVisible();
  return *window_;
}

// What the user sees

std::vector<std::string> FormWindow::panes() const {
  std::vector<std::string> labels;
  for (const auto& each : form_.panes) labels.push_back(each.label);
  return labels;
}

const std::string& FormWindow::selectedPane() const { return pane().label; }
std::vector<std::string> FormWindow::lines() const { return linesOf(pane()); }

bool FormWindow::reads(std::string_view text) const {
  return std::ranges::any_of(placesIn(pane()), [&](const FormPlace& place) {
    const auto& content = place.element->content;
    if (const auto* shown = std::get_if<FormText>(&content)) return shown->text == text;
    const auto* status = std::get_if<FormStatus>(&content);
    return status && status->text == text;
  });
}

std::string FormWindow::textIn(std::string_view field) const {
  const auto place = placeOf<TextField>(pane(), field);
  if (edit_ && edit_->key == place.element->key) return edit_->text;
  return std::get<TextField>(place.element->content).text;
}

const FormPane& FormWindow::pane() const { return form_.panes.at(selected_); }

// What the user does

void FormWindow::selectPane(std::string_view label) {
  checkIsVisible();
  const auto found = std::ranges::find(form_.panes, label, &FormPane::label);
  if (found == form_.panes.end()) throw std::out_of_range(fmt::format("no pane \"{}\"", label));
  endEdit();
  selected_ = static_cast<std::size_t>(found - form_.panes.begin());
}

void FormWindow::choose(std::string_view popUpButton, std::string_view title) {
  const auto key = operable<PopUpButton>(popUpButton);
  const auto& titles = control<PopUpButton>(key).titles;
  if (std::ranges::find(titles, title) == titles.end())
    throw std::out_of_range(fmt::format("no \"{}\" in {}", title, popUpButton));
  post<PopUpButton>(key, [title = std::string(title)](const PopUpButton& button) {
    const auto found = std::ranges::find(button.titles, title);
    if (found != button.titles.end() && button.onChosen)
      button.onChosen(static_cast<std::size_t>(found - button.titles.begin()));
  });
}

void FormWindow::toggle(std::string_view checkBox) {
  post<CheckBox>(operable<CheckBox>(checkBox), [](const CheckBox& box) {
    if (box.onToggled) box.onToggled(!box.isOn);
  });
}

void FormWindow::press(std::string_view button) {
  const auto isRadio = std::ranges::any_of(placesIn(pane()), [&](const FormPlace& place) {
    return std::holds_alternative<RadioButton>(place.element->content) && isCalled(place, button);
  });
  if (isRadio)
    return post<RadioButton>(operable<RadioButton>(button), [](const RadioButton& pressed) {
      if (pressed.onChosen) pressed.onChosen();
    });
  post<PushButton>(operable<PushButton>(button), [](const PushButton& pressed) {
    if (pressed.onClick) pressed.onClick();
  });
}

void FormWindow::drag(std::string_view slider, double value) {
  const auto key = operable<Slider>(slider);
  const auto& dragged = control<Slider>(key);
  const auto end = std::clamp(value, dragged.minimum, dragged.maximum);
  for (const auto stop : {(dragged.value + end) / 2, end})
    post<Slider>(key, [stop](const Slider& moved) {
      if (moved.onChanged) moved.onChanged(stop);
    });
}

void FormWindow::type(std::string_view field, std::string text) {
  auto key = operable<TextField>(field);
  if (edit_ && edit_->key != key) endEdit();
  edit_ = Edit{std::move(key), std::move(text)};
}

void FormWindow::pressReturn() {
  checkIsVisible();
  endEdit();
}

void FormWindow::close() {
  const auto closed = window();
  endEdit();
  system_.change([&](DesktopState& desktop) { desktop.close(closed); });
}

template <class Control>
std::string FormWindow::operable(std::string_view elementName) const {
  checkIsVisible();
  const auto place = placeOf<Control>(pane(), elementName);
  if (!place.isEnabled) throw std::out_of_range(fmt::format("\"{}\" is disabled", elementName));
  return place.element->key;
}

void FormWindow::checkIsVisible() const {
  if (!system_.processRuns() || !isVisible())
    throw std::out_of_range(fmt::format("the window {} does not show", name_));
}

// Works on a copy: the deed may replace the form or end the window.
template <class Control>
void FormWindow::post(std::string key, std::function<void(const Control&)> deed) {
  toFront();
  const auto isAlive = std::weak_ptr(isAlive_);
  system_.mainLoop.post([this, isAlive, key = std::move(key), deed = std::move(deed)] {
    if (isAlive.expired()) return;
    for (const auto& each : form_.panes)
      for (const auto& place : placesIn(each)) {
        const auto* found = std::get_if<Control>(&place.element->content);
        if (!found || place.element->key != key) continue;
        const auto copy = *found;
        if (place.isEnabled) deed(copy);
        return;
      }
  });
}

void FormWindow::endEdit() {
  if (!edit_) return;
  const auto ended = *std::exchange(edit_, std::nullopt);
  post<TextField>(ended.key, [text = ended.text](const TextField& field) {
    if (field.onEnded) field.onEnded(text);
  });
}

// To operate a window, the user has clicked it.
void FormWindow::toFront() {
  system_.change([this](DesktopState& desktop) {
    desktop.raise(*window_);
    desktop.activate(system_.ownPid());
  });
}

// `onClosed` may end the window.
void FormWindow::gone(WindowID window) {
  if (window != window_) return;
  window_ = std::nullopt;
  edit_ = std::nullopt;
  system_.giveWay();
  if (const auto closed = onClosed) closed();
}

}  // namespace pellow::simulated
