#include "platforms/linux/qt/form_pane.h"

#include <QScrollBar>
#include <algorithm>

#include "platforms/linux/qt/form_row.h"

namespace pellow {
namespace {

constexpr int noteSpacing = 5;     // points between a control and its note
constexpr int spacing = 12;        // points between other elements
constexpr int lowHeight = 240;     // points; below that a pane is no use
constexpr int widestColumn = 240;  // points; a longer title stands alone

QVBoxLayout* makeLayout(QWidget* content) {
  auto* const layout = new QVBoxLayout(content);
  layout->setContentsMargins(20, 18, 20, 18);
  layout->setSpacing(noteSpacing);
  return layout;
}

}  // namespace

FormPaneView::FormPaneView()
    : content_(new QWidget),
      layout_(makeLayout(content_)),
      elements_(*content_, *layout_, Qt::AlignLeft, spacing - noteSpacing) {
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::NoFocus);  // keys that no control wants scroll all the same
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setWidgetResizable(true);
  setWidget(content_);
  content_->setAutoFillBackground(false);
  viewport()->setAutoFillBackground(false);
}

void FormPaneView::showElements(const std::vector<FormElement>& elements) {
  elements_.show(elements);
  layout_->setAlignment(Qt::AlignTop);
  alignTitles();
  elements_.setTabOrder(this);
  updateGeometry();
}

// Controls beside titles start on one line.
void FormPaneView::alignTitles() {
  std::vector<TextControl*> titles;
  int column = 0;
  for (auto* const control : elements_.controls()) {
    const auto* const row = dynamic_cast<RowControl*>(control);
    auto* const title = row ? row->title() : nullptr;
    if (!title || title->ownWidth() > widestColumn) continue;
    titles.push_back(title);
    column = std::max(column, title->ownWidth());
  }
  for (auto* const title : titles) title->setColumn(column);
}

void FormPaneView::retire() {
  elements_.retire();
  hide();
  deleteLater();
}

QSize FormPaneView::sizeHint() const {
  const auto content = layout_->sizeHint();
  return {content.width() + verticalScrollBar()->sizeHint().width(), content.height()};
}

QSize FormPaneView::minimumSizeHint() const {
  return {sizeHint().width(), std::min(sizeHint().height(), lowHeight)};
}

}  // namespace pellow
