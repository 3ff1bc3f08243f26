#pragma once

#include "platforms/macos/windows/form_control.h"

@class PellowControlTarget;
@class PellowSlider;

// The elements of a form that the user operates. AppKit changes a control before it sends the
// action; each is put back to what the form says first, and then reports what was asked for.

namespace pellow {

class InputControl : public FormControl {
 public:
  ~InputControl() override;

 protected:
  InputControl(NSView* view, NSControl* control);

  void setName(NSString* name) override;

  // The user has operated the control.
  virtual void act() = 0;

  void showEnabled(bool isEnabled);

 private:
  NSControl* control_;
  PellowControlTarget* target_;
};

class PopUpControl final : public InputControl {
 public:
  PopUpControl();

 protected:
  void showContent(const FormContent& content, bool isEnabled) override;
  void act() override;

 private:
  explicit PopUpControl(NSPopUpButton* control);
  void showTitles(const std::vector<std::string>& titles);
  void select();

  NSPopUpButton* popUp_;
  PopUpButton button_;
};

class CheckBoxControl final : public InputControl {
 public:
  CheckBoxControl();

 protected:
  void showContent(const FormContent& content, bool isEnabled) override;
  void act() override;

 private:
  explicit CheckBoxControl(NSButton* control);

  NSButton* button_;
  CheckBox box_;
};

// Stands alone in a view: AppKit lets radio buttons of one superview and action turn each other
// off.
class RadioControl final : public InputControl {
 public:
  RadioControl();

 protected:
  void showContent(const FormContent& content, bool isEnabled) override;
  void act() override;

 private:
  explicit RadioControl(NSButton* control);

  NSButton* radio_;
  RadioButton button_;
};

// While it is dragged, a nested event loop runs; the form may say what it likes, the knob is the
// user's.
class SliderControl final : public InputControl {
 public:
  SliderControl();
  ~SliderControl() override;

 protected:
  void showContent(const FormContent& content, bool isEnabled) override;
  void act() override;

 private:
  explicit SliderControl(PellowSlider* control);
  void showValue();

  PellowSlider* control_;
  Slider slider_;
};

class ButtonControl final : public InputControl {
 public:
  ButtonControl();

 protected:
  void showContent(const FormContent& content, bool isEnabled) override;
  void act() override;

 private:
  explicit ButtonControl(NSButton* control);

  NSButton* control_;
  PushButton button_;
};

}  // namespace pellow
