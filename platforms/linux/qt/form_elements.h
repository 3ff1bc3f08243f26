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
  // `air` points more than the layout's spacing come between two of them, but not above a note.
  FormElements(QWidget& parent, QBoxLayout& layout, Qt::Alignment alignment, int air = 0)
      : parent_(parent), layout_(layout), alignment_(alignment), air_(air) {}

  // Elements whose keys remain are kept.
  void show(const std::vector<FormElement>& elements);
  // The tab key comes to them after this widget; answers the last one.
  QWidget* setTabOrder(QWidget* before);
  void retire();

  const std::vector<FormControl*>& controls() const { return controls_; }

 private:
  FormControl& controlFor(const FormElement& element, std::vector<FormControl*>& before);
  void arrange();

  QWidget& parent_;
  QBoxLayout& layout_;
  Qt::Alignment alignment_;
  int air_;
  std::vector<FormControl*> controls_;
};

}  // namespace pellow
