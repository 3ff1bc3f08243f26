#include "platforms/linux/qt/form_control.h"

#include <cmath>
#include <variant>

#include "platforms/linux/qt/display_text.h"
#include "platforms/linux/qt/form_inputs.h"
#include "platforms/linux/qt/form_row.h"
#include "platforms/linux/qt/form_texts.h"

namespace pellow {
namespace {

FormControl* makeKind(const FormContent& content, QWidget& parent) {
  struct Maker {
    QWidget& parent;
    FormControl* operator()(const FormText&) const { return new TextControl(parent); }
    FormControl* operator()(const FormStatus&) const { return new StatusControl(parent); }
    FormControl* operator()(const PopUpButton&) const { return new PopUpControl(parent); }
    FormControl* operator()(const CheckBox&) const { return new CheckBoxControl(parent); }
    FormControl* operator()(const RadioButton&) const { return new RadioControl(parent); }
    FormControl* operator()(const Slider&) const { return new SliderControl(parent); }
    FormControl* operator()(const TextField&) const { return new TextFieldControl(parent); }
    FormControl* operator()(const PushButton&) const { return new ButtonControl(parent); }
    FormControl* operator()(const FormRow&) const { return new RowControl(parent); }
  };
  return std::visit(Maker{parent}, content);
}

void setWidth(QWidget& widget, const std::optional<double>& width) {
  const int most = width ? static_cast<int>(std::lround(*width)) : QWIDGETSIZE_MAX;
  if (widget.maximumWidth() == most) return;
  widget.setMinimumWidth(width ? most : 0);
  widget.setMaximumWidth(most);
}

}  // namespace

FormControl& FormControl::make(const FormElement& element, QWidget& parent) {
  auto& control = *makeKind(element.content, parent);
  control.key_ = element.key;
  control.kind_ = element.content.index();
  control.show(element);
  return control;
}

bool FormControl::isOf(const FormElement& element) const {
  return key_ == element.key && kind_ == element.content.index();
}

void FormControl::show(const FormElement& element) {
  showContent(element.content);
  auto& shown = widget();
  setWidth(shown, element.width);
  if (const auto tip = toolTipText(element.tooltip); shown.toolTip() != tip) shown.setToolTip(tip);
  if (shown.isEnabled() != element.isEnabled) shown.setEnabled(element.isEnabled);
  showName(QString::fromStdString(element.accessibleName));
}

QWidget* FormControl::setTabOrder(QWidget* before) {
  if (before->nextInFocusChain() != &widget()) QWidget::setTabOrder(before, &widget());
  return &widget();
}

void FormControl::showName(const QString& name) {
  if (auto& shown = widget(); shown.accessibleName() != name) shown.setAccessibleName(name);
}

void FormControl::retire() {
  isRetired_ = true;
  retireParts();
  widget().hide();
  widget().deleteLater();
}

}  // namespace pellow
