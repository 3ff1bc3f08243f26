#include "platforms/linux/qt/form_inputs.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleOptionSlider>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "platforms/linux/qt/display_text.h"

namespace pellow {
namespace {

// A slider takes whole numbers only; this many are finer than the screen.
constexpr int sliderSteps = 10000;

constexpr int buttonAir = 16;    // points beside the title, on top of the style's
constexpr int buttonWidth = 80;  // points, at least

void showTitle(QAbstractButton& button, const std::string& title) {
  if (const auto text = titleText(title); button.text() != text) button.setText(text);
}

}  // namespace

PopUpControl::PopUpControl(QWidget& parent) : QComboBox(&parent) {
  setSizeAdjustPolicy(QComboBox::AdjustToContents);
  connect(this, &QComboBox::activated, this, [this](int index) {
    select();
    call(button_.onChosen, static_cast<std::size_t>(index));
  });
}

void PopUpControl::showContent(const FormContent& content) {
  const auto& shown = std::get<PopUpButton>(content);
  if (shown.titles != button_.titles) {
    clear();
    for (const auto& title : shown.titles) addItem(QString::fromStdString(title));
  }
  button_ = shown;
  select();
}

void PopUpControl::select() {
  const int selected = button_.selected ? static_cast<int>(*button_.selected) : -1;
  if (currentIndex() != selected) setCurrentIndex(selected);
}

void PopUpControl::wheelEvent(QWheelEvent* event) { event->ignore(); }

CheckBoxControl::CheckBoxControl(QWidget& parent) : QCheckBox(&parent) {
  connect(this, &QCheckBox::clicked, this, [this](bool isOn) {
    setChecked(box_.isOn);
    call(box_.onToggled, isOn);
  });
}

void CheckBoxControl::showContent(const FormContent& content) {
  box_ = std::get<CheckBox>(content);
  showTitle(*this, box_.title);
  setChecked(box_.isOn);
}

RadioControl::RadioControl(QWidget& parent) : QRadioButton(&parent) {
  setAutoExclusive(false);
  connect(this, &QRadioButton::clicked, this, [this] {
    setChecked(button_.isOn);
    call(button_.onChosen);
  });
}

void RadioControl::showContent(const FormContent& content) {
  button_ = std::get<RadioButton>(content);
  showTitle(*this, button_.title);
  setChecked(button_.isOn);
}

SliderControl::SliderControl(QWidget& parent) : QSlider(Qt::Horizontal, &parent) {
  setRange(0, sliderSteps);
  setSingleStep(sliderSteps / 100);
  setPageStep(sliderSteps / 10);
  connect(this, &QSlider::valueChanged, this, [this](int position) {
    if (!isSliderDown()) showValue();
    call(slider_.onChanged, valueAt(position));
  });
  connect(this, &QSlider::sliderReleased, this, [this] { showValue(); });
}

int SliderControl::positionOf(double value) const {
  const double length = slider_.maximum - slider_.minimum;
  if (length <= 0) return 0;
  const double share = std::clamp((value - slider_.minimum) / length, 0.0, 1.0);
  return static_cast<int>(std::lround(share * sliderSteps));
}

double SliderControl::valueAt(int position) const {
  const double share = static_cast<double>(position) / sliderSteps;
  return slider_.minimum + (slider_.maximum - slider_.minimum) * share;
}

void SliderControl::showContent(const FormContent& content) {
  slider_ = std::get<Slider>(content);
  setTickPosition(slider_.tickMarks > 1 ? QSlider::TicksBothSides : QSlider::NoTicks);
  setTickInterval(slider_.tickMarks > 1 ? sliderSteps / (slider_.tickMarks - 1) : 0);
  if (!isSliderDown()) showValue();
}

void SliderControl::showValue() {
  if (const int position = positionOf(slider_.value); position != value()) {
    const QSignalBlocker silent(this);
    setValue(position);
  }
}

void SliderControl::wheelEvent(QWheelEvent* event) { event->ignore(); }

// Moves the knob under the pointer first, so that the press takes hold of it.
void SliderControl::mousePressEvent(QMouseEvent* event) {
  QStyleOptionSlider option;
  initStyleOption(&option);
  const auto part = [&](QStyle::SubControl control) {
    return style()->subControlRect(QStyle::CC_Slider, &option, control, this);
  };
  const auto knob = part(QStyle::SC_SliderHandle);
  if (event->button() == Qt::LeftButton && !knob.contains(event->position().toPoint())) {
    const auto groove = part(QStyle::SC_SliderGroove);
    const int offset = static_cast<int>(event->position().x()) - groove.left() - knob.width() / 2;
    setValue(QStyle::sliderValueFromPosition(minimum(), maximum(), offset,
                                             groove.width() - knob.width(), option.upsideDown));
  }
  QSlider::mousePressEvent(event);
}

TextFieldControl::TextFieldControl(QWidget& parent) : QLineEdit(&parent) {
  connect(this, &QLineEdit::textEdited, this, [this] { isEdited_ = true; });
}

void TextFieldControl::showContent(const FormContent& content) {
  field_ = std::get<TextField>(content);
  if (!isEdited_) showText();
}

void TextFieldControl::showText() {
  if (const auto string = QString::fromStdString(field_.text); text() != string) setText(string);
}

void TextFieldControl::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      end();
      return selectAll();
    case Qt::Key_Escape:
      if (!isEdited_) break;
      isEdited_ = false;
      showText();
      return selectAll();
  }
  QLineEdit::keyPressEvent(event);
}

// Its own menu takes the focus only for a moment.
void TextFieldControl::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  if (event->reason() != Qt::PopupFocusReason) finishEditing();
}

void TextFieldControl::finishEditing() {
  if (isEdited_) end();
}

void TextFieldControl::end() {
  isEdited_ = false;
  call(field_.onEnded, text().toStdString());
  if (!isEdited_) showText();
}

ButtonControl::ButtonControl(QWidget& parent) : QPushButton(&parent) {
  setAutoDefault(false);
  connect(this, &QPushButton::clicked, this, [this] { call(button_.onClick); });
}

QSize ButtonControl::sizeHint() const {
  const auto hint = QPushButton::sizeHint();
  return {std::max(hint.width() + buttonAir, buttonWidth), hint.height()};
}

void ButtonControl::showContent(const FormContent& content) {
  button_ = std::get<PushButton>(content);
  showTitle(*this, button_.title);
}

}  // namespace pellow
