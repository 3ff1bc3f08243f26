#include "platforms/linux/qt/qt_alerts.h"

#include <QDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "platforms/linux/qt/display_text.h"
#include "platforms/linux/qt/key_guard.h"
#include "platforms/linux/qt/program_icon.h"

namespace pellow {
namespace {

constexpr int textWidth = 380;    // points
constexpr int buttonWidth = 88;   // points, at least
constexpr int buttonMargin = 16;  // points, at least, on both sides of its title

QLabel* makeText(const std::string& text, QWidget* parent) {
  auto* const label = new QLabel(QString::fromStdString(text), parent);
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->setWordWrap(true);
  label->setMinimumWidth(textWidth);
  label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  return label;
}

QLabel* makeIcon(AlertStyle style, QWidget* parent) {
  const auto kind = style == AlertStyle::warning ? QStyle::SP_MessageBoxWarning
                                                 : QStyle::SP_MessageBoxInformation;
  const int side = parent->style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
  auto* const label = new QLabel(parent);
  label->setPixmap(parent->style()
                       ->standardIcon(kind, nullptr, parent)
                       .pixmap(QSize(side, side), parent->devicePixelRatio()));
  return label;
}

// The dialog's result is the button that ended it; -1 when its window was closed.
std::unique_ptr<QDialog> makeDialog(const Alert& alert) {
  auto dialog = std::make_unique<QDialog>();
  dialog->setWindowTitle("Pellow");
  dialog->setWindowIcon(programIcon());
  dialog->setAttribute(Qt::WA_QuitOnClose, false);
  auto* const rows = new QGridLayout(dialog.get());
  rows->setContentsMargins(20, 20, 20, 16);
  rows->setHorizontalSpacing(16);
  rows->setVerticalSpacing(8);
  rows->setSizeConstraint(QLayout::SetFixedSize);
  rows->addWidget(makeIcon(alert.style, dialog.get()), 0, 0, 2, 1, Qt::AlignTop);
  auto* const message = makeText(alert.messageText, dialog.get());
  auto font = message->font();
  font.setBold(true);
  message->setFont(font);
  rows->addWidget(message, 0, 1);
  if (!alert.informativeText.empty())
    rows->addWidget(makeText(alert.informativeText, dialog.get()), 1, 1);

  auto* const buttons = new QHBoxLayout;
  buttons->setContentsMargins(0, 10, 0, 0);
  buttons->setSpacing(8);
  buttons->addStretch();
  for (std::size_t index = 0; index < alert.buttons.size(); ++index) {
    auto* const button = new QPushButton(titleText(alert.buttons[index]), dialog.get());
    const int title = button->fontMetrics().horizontalAdvance(button->text());
    button->setMinimumWidth(std::max(buttonWidth, title + 2 * buttonMargin));
    button->setAutoDefault(index == 0);
    button->setDefault(index == 0);
    QObject::connect(button, &QPushButton::clicked, dialog.get(),
                     [box = dialog.get(), index] { box->done(static_cast<int>(index) + 1); });
    buttons->addWidget(button);
  }
  rows->addLayout(buttons, 2, 0, 1, 2);
  return dialog;
}

}  // namespace

Subscription QtAlerts::show(Alert alert, std::function<void(std::size_t)> onChosen) {
  // Lives until the alert is answered or taken away.
  struct Showing {
    std::unique_ptr<QDialog> dialog;
    std::optional<KeyGuard> keys = {};
    Subscription answer = {};

    // The window's own work may take the alert away.
    ~Showing() {
      dialog->hide();
      dialog.release()->deleteLater();
    }
  };
  const auto showing = std::make_shared<Showing>(makeDialog(alert));
  auto* const dialog = showing->dialog.get();
  const auto last = alert.buttons.size() - 1;
  const auto finish = [this, weak = std::weak_ptr(showing), last, onChosen](int result) {
    const auto still = weak.lock();
    if (!still) return;
    const auto button = result > 0 ? static_cast<std::size_t>(result) - 1 : last;
    still->answer = queue_.async([onChosen, button] { onChosen(button); });
  };
  QObject::connect(dialog, &QDialog::finished, dialog, finish);
  const auto window = static_cast<xcb_window_t>(dialog->winId());
  showing->keys.emplace(*dialog->windowHandle());
  hints_.setName(window, "pellow-alert");
  dialog->show();
  dialog->raise();
  hints_.activate(window);
  return Subscription([held = showing]() mutable { held.reset(); });
}

}  // namespace pellow
