#include "platforms/macos/windows/form_inputs.h"

#include <algorithm>

#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"
#include "platforms/macos/windows/control_target.h"
#include "platforms/macos/windows/form_slider.h"

namespace pellow {
namespace {

constexpr CGFloat sliderWidth = 100;  // points

NSControlStateValue stateOf(bool isOn) {
  return isOn ? NSControlStateValueOn : NSControlStateValueOff;
}

void showButton(NSButton* button, const std::string& title, bool isOn) {
  NSString* const string = toNSString(title);
  if (![button.title isEqualToString:string]) button.title = string;
  if (button.state != stateOf(isOn)) button.state = stateOf(isOn);
}

}  // namespace

InputControl::InputControl(NSView* view, NSControl* control)
    : FormControl(view), control_(control), target_([[PellowControlTarget alloc] init]) {
  target_->onAction = [this] { act(); };
  control_.target = target_;
  control_.action = @selector(act:);
}

// AppKit may be in the middle of the action.
InputControl::~InputControl() {
  target_->onAction = nullptr;
  keepUntilIdle(target_);
}

void InputControl::setName(NSString* name) { control_.accessibilityLabel = name; }

void InputControl::showEnabled(bool isEnabled) {
  if (control_.enabled != isEnabled) control_.enabled = isEnabled;
}

PopUpControl::PopUpControl()
    : PopUpControl([[NSPopUpButton alloc] initWithFrame:NSZeroRect pullsDown:NO]) {}

PopUpControl::PopUpControl(NSPopUpButton* control)
    : InputControl(control, control), popUp_(control) {
  popUp_.autoenablesItems = NO;
}

void PopUpControl::showContent(const FormContent& content, bool isEnabled) {
  const auto& shown = std::get<PopUpButton>(content);
  if (shown.titles != button_.titles) showTitles(shown.titles);
  button_ = shown;
  select();
  showEnabled(isEnabled);
}

// The button's own method drops an item of the same title.
void PopUpControl::showTitles(const std::vector<std::string>& titles) {
  [popUp_ removeAllItems];
  for (const auto& title : titles)
    [popUp_.menu addItem:[[NSMenuItem alloc] initWithTitle:toNSString(title)
                                                    action:nil
                                             keyEquivalent:@""]];
}

void PopUpControl::select() {
  NSMenuItem* const item =
      button_.selected ? [popUp_ itemAtIndex:static_cast<NSInteger>(*button_.selected)] : nil;
  if (popUp_.selectedItem != item) [popUp_ selectItem:item];
}

void PopUpControl::act() {
  const NSInteger index = popUp_.indexOfSelectedItem;
  select();
  if (index >= 0) report(button_.onChosen, static_cast<std::size_t>(index));
}

CheckBoxControl::CheckBoxControl()
    : CheckBoxControl([NSButton checkboxWithTitle:@"" target:nil action:nil]) {}

CheckBoxControl::CheckBoxControl(NSButton* control)
    : InputControl(control, control), button_(control) {}

void CheckBoxControl::showContent(const FormContent& content, bool isEnabled) {
  box_ = std::get<CheckBox>(content);
  showButton(button_, box_.title, box_.isOn);
  showEnabled(isEnabled);
}

void CheckBoxControl::act() {
  const bool isOn = button_.state == NSControlStateValueOn;
  button_.state = stateOf(box_.isOn);
  report(box_.onToggled, isOn);
}

RadioControl::RadioControl()
    : RadioControl([NSButton radioButtonWithTitle:@"" target:nil action:nil]) {}

RadioControl::RadioControl(NSButton* control)
    : InputControl([NSStackView stackViewWithViews:@[ control ]], control), radio_(control) {}

void RadioControl::showContent(const FormContent& content, bool isEnabled) {
  button_ = std::get<RadioButton>(content);
  showButton(radio_, button_.title, button_.isOn);
  showEnabled(isEnabled);
}

void RadioControl::act() {
  radio_.state = stateOf(button_.isOn);
  report(button_.onChosen);
}

SliderControl::SliderControl() : SliderControl([PellowSlider sliderWithTarget:nil action:nil]) {}

SliderControl::SliderControl(PellowSlider* control)
    : InputControl(control, control), control_(control) {
  control_->onDragged = [this] { showValue(); };
  suggestWidth(control_, sliderWidth);
}

SliderControl::~SliderControl() { control_->onDragged = nullptr; }

void SliderControl::showContent(const FormContent& content, bool isEnabled) {
  slider_ = std::get<Slider>(content);
  if (!control_.isDragged) showValue();
  showEnabled(isEnabled);
}

void SliderControl::showValue() {
  if (control_.minValue != slider_.minimum) control_.minValue = slider_.minimum;
  if (control_.maxValue != slider_.maximum) control_.maxValue = slider_.maximum;
  if (control_.numberOfTickMarks != slider_.tickMarks)
    control_.numberOfTickMarks = slider_.tickMarks;
  const double value =
      std::clamp(slider_.value, slider_.minimum, std::max(slider_.minimum, slider_.maximum));
  if (control_.doubleValue != value) control_.doubleValue = value;
}

void SliderControl::act() {
  const double value = control_.doubleValue;
  if (!control_.isDragged) showValue();
  report(slider_.onChanged, value);
}

ButtonControl::ButtonControl()
    : ButtonControl([NSButton buttonWithTitle:@"" target:nil action:nil]) {}

ButtonControl::ButtonControl(NSButton* control)
    : InputControl(control, control), control_(control) {}

void ButtonControl::showContent(const FormContent& content, bool isEnabled) {
  button_ = std::get<PushButton>(content);
  showButton(control_, button_.title, false);
  showEnabled(isEnabled);
}

void ButtonControl::act() { report(button_.onClick); }

}  // namespace pellow
