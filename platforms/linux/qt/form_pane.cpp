#include "platforms/linux/qt/form_pane.h"

#include <QScrollBar>
#include <algorithm>

#include "platforms/linux/qt/form_row.h"

namespace pellow {
namespace {

constexpr int spacing = 10;        // points between elements
constexpr int lowHeight = 240;     // points; below that a pane is no use
constexpr int widestColumn = 240;  // points; a longer title stands alone

QVBoxLayout* makeLayout(QWidget* content) {
  auto* const layout = new QVBoxLayout(content);
  layout->setContentsMargins(20, 18, 20, 18);
  layout->setSpacing(spacing);
  return layout;
}

}  // namespace

FormPaneView::FormPaneView()
    : content_(new QWidget),
      layout_(makeLayout(content_)),
      elements_(*content_, *layout_, Qt::AlignLeft) {
  setFrameShape(QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setWidgetResizable(true);
  setWidget(content_);
  content_->setAutoFillBackground(false);
  viewport()->setAutoFillBackground(false);
}

void FormPaneView::show(const std::vector<FormElement>& elements) {
  elements_.show(elements);
  layout_->setAlignment(Qt::AlignTop);
  alignTitles();
  updateGeometry();
}

// The controls of a section that stand beside titles begin at one line.
void FormPaneView::alignTitles() {
  std::vector<TextControl*> titles;
  const auto align = [&] {
    int column = 0;
    for (const auto* title : titles) column = std::max(column, title->ownWidth());
    for (auto* title : titles) title->setColumn(column);
    titles.clear();
  };
  for (auto* const control : elements_.controls()) {
    const auto* const text = dynamic_cast<TextControl*>(control);
    if (text && text->style() == FormTextStyle::section) align();
    const auto* const row = dynamic_cast<RowControl*>(control);
    auto* const title = row ? row->title() : nullptr;
    if (title && title->ownWidth() <= widestColumn) titles.push_back(title);
  }
  align();
}

void FormPaneView::finishEditing() {
  for (auto* const control : elements_.controls()) control->finishEditing();
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
