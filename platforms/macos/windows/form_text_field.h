#pragma once

#include <memory>

#include "platforms/macos/windows/form_control.h"

@class PellowTextFieldDelegate;

namespace pellow {

// Tells once what was typed, by Return or by leaving the field; unchanged text is no edit. Escape
// undoes what was typed.
class TextFieldControl final : public FormControl {
 public:
  TextFieldControl();
  ~TextFieldControl() override;

 protected:
  void showContent(const FormContent& content, bool isEnabled) override;
  void setName(NSString* name) override;

 private:
  explicit TextFieldControl(NSTextField* control);
  void ended();
  bool cancelled();
  void showFormText();

  NSTextField* control_;
  PellowTextFieldDelegate* delegate_;
  TextField field_;
  bool isEdited_ = false;
  std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace pellow
