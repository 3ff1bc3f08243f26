#pragma once

#include <QBoxLayout>
#include <QWidget>
#include <vector>

#include "platform/form.h"
#include "platforms/linux/qt/form_control.h"

namespace pellow {

// The elements of a pane or of a row, one after another in a layout. Main thread.
class FormElements {
 public:
  // The controls go into `parent`; both outlive the elements or end with them.
  FormElements(QWidget& parent, QBoxLayout& layout, Qt::Alignment alignment)
      : parent_(parent), layout_(layout), alignment_(alignment) {}

  // Elements whose keys remain are kept.
  void show(const std::vector<FormElement>& elements);
  void retire();

  const std::vector<FormControl*>& controls() const { return controls_; }

 private:
  FormControl& controlFor(const FormElement& element, std::vector<FormControl*>& before);
  void arrange();

  QWidget& parent_;
  QBoxLayout& layout_;
  Qt::Alignment alignment_;
  std::vector<FormControl*> controls_;
};

}  // namespace pellow
