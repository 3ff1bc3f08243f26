#include "platforms/linux/qt/qt_status_bar.h"

#include <QCursor>
#include <QEvent>
#include <QSystemTrayIcon>
#include <QTimer>
#include <chrono>
#include <optional>
#include <utility>

#include "platforms/linux/qt/display_text.h"
#include "platforms/linux/qt/panel_tint.h"
#include "platforms/linux/qt/qt_menu.h"
#include "platforms/linux/qt/template_icon.h"
#include "platforms/linux/qt/tray_watch.h"

namespace pellow {

// The menu is shown by a StatusNotifierItem host, which reads it over D-Bus, or by Qt in the X11
// tray. A host may show it before asking whether it has changed. Once in the life of the process Qt
// looks which of them there is, so it is not asked before there is one.
class QtStatusBar::QtStatusItem final : public QObject, public StatusItem {
 public:
  QtStatusItem(const std::function<std::vector<PixelRect>()>& panels, const WindowHints& hints)
      : panels_(panels), hints_(hints) {
    connect(&laterLook_, &QTimer::timeout, this, [this] { lookAgain(); });
    nameWhenShown(menu_, hints_);
    menu_.installEventFilter(this);
    connect(&menu_, &QMenu::aboutToShow, this, [this] { refill(); });
  }

  void setImage(const StatusImage& image) override {
    image_ = image;
    if (icon_) show();
  }

  void setTooltip(const std::string& tooltip) override {
    tooltip_ = trayText(tooltip);
    if (icon_) icon_->setToolTip(tooltip_);
  }

  void setMenu(std::function<Menu()> menu) override {
    provider_ = std::move(menu);
    if (isExported_) refill();
  }

  bool isShown() const override {
    return icon_ && (isExported_ ? watch_.hasHost() : watch_.hasTray());
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == &menu_ && event->type() == QEvent::PaletteChange && icon_) show();
    return false;
  }

 private:
  // Qt follows from one host to the next by itself, but not from one tray to the next.
  void takePlace(TrayWatch::Place place) {
    if (icon_ && (isExported_ || place == TrayWatch::Place::host)) return;
    icon_.emplace();
    icon_->setContextMenu(&menu_);
    isExported_ = menu_.platformMenu() != nullptr;
    icon_->setToolTip(tooltip_);
    connect(&*icon_, &QSystemTrayIcon::activated, this, [this](auto reason) {
      if (reason == QSystemTrayIcon::Trigger) popUp();
    });
    if (isExported_) refill();
    show();
  }

  void show() {
    if (image_.symbol.empty()) return;
    setIcon(tint());
    icon_->show();
    looksLeft_ = 10;
    laterLook_.start(std::chrono::milliseconds(500));
  }

  // A panel that has just come, or that changes with the desktop, may not have its colours yet. In
  // a tray, what was painted there before is to be seen until it is painted again.
  void lookAgain() {
    if (--looksLeft_ == 0) laterLook_.stop();
    const auto now = tint();
    if (!isExported_ || now != tint_) setIcon(now);
  }

  // A panel has colours of its own, but a host does not tell them.
  QColor tint() const {
    return tintOn(panels_()).value_or(menu_.palette().color(QPalette::WindowText));
  }

  void setIcon(const QColor& tint) {
    tint_ = tint;
    icon_->setIcon(QIcon(new TemplateIcon(image_, tint)));
  }

  MenuSetting setting(MenuKeys keys) {
    return {.owner = menu_,
            .hints = hints_,
            .choose = [](const auto& onChosen) { onChosen(); },
            .keys = keys};
  }

  void refill() {
    menu_.clear();
    if (!provider_) return;
    fillMenu(menu_, provider_(), setting(isExported_ ? MenuKeys::asShortcuts : MenuKeys::asText));
  }

  // The primary button opens the menu too; Qt handles the secondary one.
  void popUp() {
    if (provider_) makeMenu(provider_(), setting(MenuKeys::asText))->popup(QCursor::pos());
  }

  const std::function<std::vector<PixelRect>()>& panels_;
  const WindowHints& hints_;
  std::function<Menu()> provider_;
  StatusImage image_;
  QMenu menu_;
  QString tooltip_;
  QColor tint_;
  QTimer laterLook_;
  int looksLeft_ = 0;
  std::optional<QSystemTrayIcon> icon_;
  bool isExported_ = false;  // to a host
  TrayWatch watch_{[this](auto place) { takePlace(place); }};
};

std::unique_ptr<StatusItem> QtStatusBar::makeStatusItem() {
  return std::make_unique<QtStatusItem>(panels_, hints_);
}

}  // namespace pellow
