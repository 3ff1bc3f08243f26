#include "platforms/linux/qt/qt_status_bar.h"

#include <QCursor>
#include <QEvent>
#include <QSystemTrayIcon>
#include <utility>

#include "platforms/linux/qt/display_text.h"
#include "platforms/linux/qt/qt_menu.h"
#include "platforms/linux/qt/template_icon.h"

namespace pellow {

// The menu is shown by a StatusNotifierItem host, which reads it over D-Bus, or by Qt in the X11
// tray. A host may show it before asking whether it has changed.
class QtStatusBar::QtStatusItem final : public QObject, public StatusItem {
 public:
  explicit QtStatusItem(const WindowHints& hints) : hints_(hints) {
    nameWhenShown(menu_, hints_);
    menu_.installEventFilter(this);
    icon_.setContextMenu(&menu_);
    connect(&menu_, &QMenu::aboutToShow, this, [this] { refill(); });
    connect(&icon_, &QSystemTrayIcon::activated, this, [this](auto reason) {
      if (reason == QSystemTrayIcon::Trigger) popUp();
    });
  }

  void setImage(const StatusImage& image) override {
    image_ = image;
    icon_.setIcon(QIcon(new TemplateIcon(image_)));
    icon_.show();
  }

  void setTooltip(const std::string& tooltip) override { icon_.setToolTip(trayText(tooltip)); }

  void setMenu(std::function<Menu()> menu) override {
    provider_ = std::move(menu);
    if (isExported()) refill();
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == &menu_ && event->type() == QEvent::PaletteChange && icon_.isVisible())
      icon_.setIcon(QIcon(new TemplateIcon(image_)));
    return false;
  }

 private:
  bool isExported() { return menu_.platformMenu() != nullptr; }

  MenuSetting setting(MenuKeys keys) {
    return {.owner = menu_,
            .hints = hints_,
            .choose = [](const auto& onChosen) { onChosen(); },
            .keys = keys};
  }

  void refill() {
    menu_.clear();
    if (!provider_) return;
    fillMenu(menu_, provider_(), setting(isExported() ? MenuKeys::asShortcuts : MenuKeys::asText));
  }

  // The primary button opens the menu too; Qt handles the secondary one.
  void popUp() {
    if (provider_) makeMenu(provider_(), setting(MenuKeys::asText))->popup(QCursor::pos());
  }

  const WindowHints& hints_;
  std::function<Menu()> provider_;
  StatusImage image_;
  QMenu menu_;
  QSystemTrayIcon icon_;
};

std::unique_ptr<StatusItem> QtStatusBar::makeStatusItem() {
  return std::make_unique<QtStatusItem>(hints_);
}

}  // namespace pellow
