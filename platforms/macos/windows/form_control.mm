#include "platforms/macos/windows/form_control.h"

#include <utility>
#include <variant>

#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"
#include "platforms/macos/windows/form_inputs.h"
#include "platforms/macos/windows/form_row.h"
#include "platforms/macos/windows/form_text_field.h"
#include "platforms/macos/windows/form_texts.h"

namespace pellow {
namespace {

struct Maker {
  using Made = std::unique_ptr<FormControl>;

  Made operator()(const FormText&) const { return std::make_unique<TextControl>(); }
  Made operator()(const FormStatus&) const { return std::make_unique<StatusControl>(); }
  Made operator()(const PopUpButton&) const { return std::make_unique<PopUpControl>(); }
  Made operator()(const CheckBox&) const { return std::make_unique<CheckBoxControl>(); }
  Made operator()(const RadioButton&) const { return std::make_unique<RadioControl>(); }
  Made operator()(const Slider&) const { return std::make_unique<SliderControl>(); }
  Made operator()(const TextField&) const { return std::make_unique<TextFieldControl>(); }
  Made operator()(const PushButton&) const { return std::make_unique<ButtonControl>(); }
  Made operator()(const FormRow&) const { return std::make_unique<RowControl>(); }
};

}  // namespace

std::unique_ptr<FormControl> FormControl::make(const FormElement& element) {
  auto control = std::visit(Maker{}, element.content);
  control->key_ = element.key;
  control->kind_ = element.content.index();
  return control;
}

FormControl::FormControl(NSView* view) : view_(view) {
  view_.translatesAutoresizingMaskIntoConstraints = NO;
}

FormControl::~FormControl() {
  [view_ removeFromSuperview];
  keepUntilIdle(view_);
}

bool FormControl::isOf(const FormElement& element) const {
  return key_ == element.key && kind_ == element.content.index();
}

void FormControl::show(const FormElement& element, bool isInEnabled) {
  showContent(element.content, element.isEnabled && isInEnabled);
  NSString* const tip = element.tooltip.empty() ? nil : toNSString(element.tooltip);
  if (tip != view_.toolTip && ![tip isEqualToString:view_.toolTip]) view_.toolTip = tip;
  if (std::exchange(name_, element.accessibleName) != element.accessibleName)
    setName(name_.empty() ? nil : toNSString(name_));
  if (element.width && !width_) width_ = [view_.widthAnchor constraintEqualToConstant:0];
  if (element.width) width_.constant = *element.width;
  width_.active = element.width.has_value();
}

void suggestWidth(NSView* view, CGFloat width) {
  NSLayoutConstraint* const suggestion = [view.widthAnchor constraintEqualToConstant:width];
  suggestion.priority = NSLayoutPriorityDefaultHigh;
  suggestion.active = YES;
}

void showText(NSTextField* field, const std::string& text) {
  NSString* const string = toNSString(text);
  if (![field.stringValue isEqualToString:string]) field.stringValue = string;
}

}  // namespace pellow
