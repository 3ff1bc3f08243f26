#pragma once

#include <QHBoxLayout>
#include <QWidget>

#include "platforms/linux/qt/form_elements.h"
#include "platforms/linux/qt/form_texts.h"

namespace pellow {

// Elements side by side.
class RowControl final : public QWidget, public FormControl {
 public:
  explicit RowControl(QWidget& parent);

  QWidget& widget() override { return *this; }

  QWidget* setTabOrder(QWidget* before) override { return elements_.setTabOrder(before); }

  // The text at the start of the row, if a control follows it.
  TextControl* title() const;

 protected:
  void showContent(const FormContent& content) override;
  void retireParts() override { elements_.retire(); }

 private:
  QHBoxLayout layout_;
  FormElements elements_;
};

}  // namespace pellow
