#include "platforms/linux/qt/qt_form_windows.h"

#include <QCloseEvent>
#include <QScreen>
#include <QShortcut>
#include <QTabWidget>
#include <QVBoxLayout>
#include <optional>
#include <utility>

#include "platforms/linux/qt/display_text.h"
#include "platforms/linux/qt/form_pane.h"
#include "platforms/linux/qt/program_icon.h"

namespace pellow {
namespace {

constexpr int textPixelSize = 13;    // points
constexpr int tallest = 660;         // points, at first
constexpr double screenShare = 0.9;  // of the free height, at most

// The window itself, which goes when its work is done.
class FormView final : public QWidget {
 public:
  FormView(const QString& title, std::function<void()> onClosed);

  void setForm(Form form);
  void chooseSize();
  void giveUp();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void showForm(const Form& form);
  FormPaneView& pane(int index) const { return static_cast<FormPaneView&>(*tabs_->widget(index)); }

  QTabWidget* tabs_;
  std::function<void()> onClosed_;
  bool isShowing_ = false;
  std::optional<Form> next_;
};

FormView::FormView(const QString& title, std::function<void()> onClosed)
    : tabs_(new QTabWidget), onClosed_(std::move(onClosed)) {
  setWindowTitle(title);
  setWindowIcon(programIcon());
  setAttribute(Qt::WA_QuitOnClose, false);
  auto text = font();
  text.setPixelSize(textPixelSize);
  setFont(text);
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(12, 12, 12, 12);
  layout->addWidget(tabs_);
  tabs_->setFocus();  // so that keys work at once
  auto* const close = new QShortcut(QKeySequence::Close, this);
  connect(close, &QShortcut::activated, this, &QWidget::close);
}

// Another form may come while one is being put on: a field that is taken away still tells what was
// typed.
void FormView::setForm(Form form) {
  next_ = std::move(form);
  if (std::exchange(isShowing_, true)) return;
  while (next_) showForm(*std::exchange(next_, std::nullopt));
  isShowing_ = false;
}

void FormView::showForm(const Form& form) {
  const int count = static_cast<int>(form.panes.size());
  while (tabs_->count() > count) {
    auto& gone = pane(tabs_->count() - 1);
    tabs_->removeTab(tabs_->count() - 1);
    gone.retire();
  }
  for (int index = 0; index < count; ++index) {
    const auto& shown = form.panes[static_cast<std::size_t>(index)];
    const auto label = titleText(shown.label);
    if (index == tabs_->count()) tabs_->addTab(new FormPaneView, label);
    if (tabs_->tabText(index) != label) tabs_->setTabText(index, label);
    pane(index).showElements(shown.elements);
  }
}

void FormView::chooseSize() {
  const auto wanted = sizeHint();
  const double free = screen()->availableGeometry().height() * screenShare;
  resize(wanted.width(), std::min({wanted.height(), tallest, static_cast<int>(free)}));
}

void FormView::giveUp() {
  onClosed_ = nullptr;
  for (int index = 0; index < tabs_->count(); ++index) pane(index).retire();
  hide();
  deleteLater();
}

void FormView::closeEvent(QCloseEvent* event) {
  if (auto* const control = dynamic_cast<FormControl*>(focusWidget())) control->finishEditing();
  event->accept();
  hide();
  if (const auto onClosed = onClosed_) onClosed();
}

}  // namespace

class QtFormWindows::QtFormWindow final : public FormWindow {
 public:
  QtFormWindow(const WindowHints& hints, std::string name, const std::string& title)
      : hints_(hints),
        view_(new FormView(QString::fromStdString(title),
                           [this] {
                             if (const auto kept = onClosed) kept();
                           })),
        name_(std::move(name)) {}

  ~QtFormWindow() override { view_->giveUp(); }

  void setForm(Form form) override { view_->setForm(std::move(form)); }

  // The X window is a new one each time.
  void present() override {
    hints_.setName(window(), name_);
    if (!std::exchange(hasSize_, true)) view_->chooseSize();
    view_->setWindowState(view_->windowState() & ~Qt::WindowMinimized);
    view_->show();
    view_->raise();
    hints_.activate(window());
  }

  bool isVisible() const override { return view_->isVisible(); }

 private:
  xcb_window_t window() const { return static_cast<xcb_window_t>(view_->winId()); }

  const WindowHints& hints_;
  FormView* view_;  // deletes itself when it has been given up
  std::string name_;
  bool hasSize_ = false;
};

std::unique_ptr<FormWindow> QtFormWindows::makeWindow(std::string name, std::string title) {
  return std::make_unique<QtFormWindow>(hints_, std::move(name), title);
}

}  // namespace pellow
