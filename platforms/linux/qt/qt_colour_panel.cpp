#include "platforms/linux/qt/qt_colour_panel.h"

#include <QPointer>
#include <QSignalBlocker>
#include <utility>

#include "platforms/linux/qt/material.h"

namespace pellow {

QtColourPanel::QtColourPanel() = default;

QtColourPanel::~QtColourPanel() = default;

QColorDialog& QtColourPanel::dialog() {
  if (dialog_) return *dialog_;
  dialog_ = std::make_unique<QColorDialog>();
  dialog_->setOptions(QColorDialog::NoButtons | QColorDialog::DontUseNativeDialog);
  dialog_->setWindowTitle("Colours");
  dialog_->setWindowFlag(Qt::WindowStaysOnTopHint);  // as strips may stand above other windows
  dialog_->setAttribute(Qt::WA_QuitOnClose, false);
  QObject::connect(dialog_.get(), &QColorDialog::currentColorChanged, dialog_.get(),
                   [this](const QColor& colour) { tell(colour); });
  QObject::connect(dialog_.get(), &QDialog::finished, dialog_.get(), [this] { current_.reset(); });
  return *dialog_;
}

void QtColourPanel::tell(const QColor& colour) {
  const auto showing = current_.lock();
  if (!showing) return;
  const auto onChange = showing->onChange;  // it may show the panel for somebody else
  onChange(toColour(colour));
}

Subscription QtColourPanel::show(Colour colour, std::function<void(Colour)> onChange) {
  auto& panel = dialog();
  auto showing = std::make_shared<Showing>(std::move(onChange));
  {
    const QSignalBlocker silent(panel);
    panel.setCurrentColor(toQColor(colour));
  }
  current_ = showing;
  const auto window = static_cast<xcb_window_t>(panel.winId());
  hints_.setName(window, "pellow-colours");
  panel.show();
  panel.raise();
  hints_.activate(window);
  return Subscription([this, dialog = QPointer(&panel), showing]() mutable {
    if (!dialog || current_.lock() != showing) return;
    current_.reset();
    dialog->hide();
  });
}

}  // namespace pellow
