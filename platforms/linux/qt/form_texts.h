#pragma once

#include <QLabel>

#include "platforms/linux/qt/form_control.h"

namespace pellow {

// As wide as its text, which breaks into lines where it would be too wide.
class TextControl final : public QLabel, public FormControl {
 public:
  explicit TextControl(QWidget& parent);

  QWidget& widget() override { return *this; }

  FormTextStyle style() const { return style_; }
  bool isNote() const override { return style_ == FormTextStyle::secondary; }

  // The width of the text's column; the text's own if that is wider.
  void setColumn(int width);
  // The width without a column.
  int ownWidth() const;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  int heightForWidth(int) const override { return sizeHint().height(); }

 protected:
  void showContent(const FormContent& content) override;
  void changeEvent(QEvent* event) override;

 private:
  void chooseColour();

  FormTextStyle style_ = FormTextStyle::body;
  int column_ = 0;
};

// A symbol and a word in one colour.
class StatusControl final : public QWidget, public FormControl {
 public:
  explicit StatusControl(QWidget& parent);

  QWidget& widget() override { return *this; }
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void showContent(const FormContent& content) override;
  void showName(const QString&) override {}  // it is called what it says
  void paintEvent(QPaintEvent* event) override;

 private:
  FormStatus status_;
};

}  // namespace pellow
