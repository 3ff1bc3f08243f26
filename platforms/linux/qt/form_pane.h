#pragma once

#include <QScrollArea>
#include <QVBoxLayout>

#include "platform/form.h"
#include "platforms/linux/qt/form_elements.h"

namespace pellow {

// A pane of a form: its elements from top to bottom, which scroll when they are too tall. Main
// thread.
class FormPaneView final : public QScrollArea {
 public:
  FormPaneView();

  void showElements(const std::vector<FormElement>& elements);

  // Like `FormControl::retire`.
  void retire();

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 private:
  void alignTitles();

  QWidget* content_;
  QVBoxLayout* layout_;
  FormElements elements_;
};

}  // namespace pellow
