#pragma once

#include "platforms/macos/windows/form_control.h"

namespace pellow {

// As wide as its text, which breaks into lines where it would be too wide.
class TextControl final : public FormControl {
 public:
  TextControl();

  FormTextStyle style() const { return style_; }

  // Points; the text's own width if that is more.
  void setColumn(CGFloat width);
  // Without a column.
  CGFloat ownWidth() const { return label_.intrinsicContentSize.width; }

 protected:
  void showContent(const FormContent& content, bool isEnabled) override;

 private:
  explicit TextControl(NSTextField* label);
  TextControl(NSTextField* label, NSStackView* around);

  NSTextField* label_;
  NSStackView* around_;  // gives the title of a section its air
  NSLayoutConstraint* column_;
  FormTextStyle style_ = FormTextStyle::body;
};

// A symbol and a word in one colour.
class StatusControl final : public FormControl {
 public:
  StatusControl();

 protected:
  void showContent(const FormContent& content, bool isEnabled) override;

 private:
  StatusControl(NSImageView* symbol, NSTextField* label);

  NSImageView* symbol_;
  NSTextField* label_;
  std::string shownSymbol_;
};

}  // namespace pellow
