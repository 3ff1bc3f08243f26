#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>

#include "platforms/linux/qt/form_control.h"

// The elements of a form that the user operates. The wheel scrolls the pane and changes none of
// them.

namespace pellow {

class PopUpControl final : public QComboBox, public FormControl {
 public:
  explicit PopUpControl(QWidget& parent);

  QWidget& widget() override { return *this; }

 protected:
  void showContent(const FormContent& content) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  void select();

  PopUpButton button_;
};

class CheckBoxControl final : public QCheckBox, public FormControl {
 public:
  explicit CheckBoxControl(QWidget& parent);

  QWidget& widget() override { return *this; }

 protected:
  void showContent(const FormContent& content) override;

 private:
  CheckBox box_;
};

// A click turns it on; the form turns the other one off.
class RadioControl final : public QRadioButton, public FormControl {
 public:
  explicit RadioControl(QWidget& parent);

  QWidget& widget() override { return *this; }

 protected:
  void showContent(const FormContent& content) override;

 private:
  RadioButton button_;
};

// A press anywhere on it moves the knob there.
class SliderControl final : public QSlider, public FormControl {
 public:
  explicit SliderControl(QWidget& parent);

  QWidget& widget() override { return *this; }

 protected:
  void showContent(const FormContent& content) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  int positionOf(double value) const;
  double valueAt(int position) const;
  void showValue();

  Slider slider_;
};

// Tells once what was typed; unchanged text is no edit. Escape undoes what was typed.
class TextFieldControl final : public QLineEdit, public FormControl {
 public:
  explicit TextFieldControl(QWidget& parent);

  QWidget& widget() override { return *this; }
  void finishEditing() override;

 protected:
  void showContent(const FormContent& content) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void end();
  void showText();

  TextField field_;
  bool isEdited_ = false;
};

class ButtonControl final : public QPushButton, public FormControl {
 public:
  explicit ButtonControl(QWidget& parent);

  QWidget& widget() override { return *this; }
  QSize sizeHint() const override;

 protected:
  void showContent(const FormContent& content) override;

 private:
  PushButton button_;
};

}  // namespace pellow
