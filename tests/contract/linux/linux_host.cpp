#include <gtest/gtest.h>
#include <unistd.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QColorDialog>
#include <QMenu>
#include <csignal>
#include <cstdlib>
#include <map>
#include <optional>
#include <stdexcept>

#include "platforms/linux/linux_platform.h"
#include "platforms/linux/qt/qt_application.h"
#include "tests/contract/host.h"
#include "tests/harness/eventually.h"
#include "tests/harness/test_client.h"
#include "tests/linux/tray.h"

// A private X server with a window manager and a tray; this process uses it as the program does.

namespace pellow::contract {
namespace {

using desktop::DesktopSession;
using desktop::PixelRect;
using desktop::WindowID;

class LinuxGuest final : public Guest {
 public:
  LinuxGuest(DesktopSession& desktop, const std::string& name)
      : desktop_(desktop), client_(desktop, name), pid_(client_.process().pid()) {}

  ProcessID pid() const override { return pid_; }
  void open(const std::string& title, const QuartzRect& frame) override {
    windows_[title] = client_.open(
        title, {int(frame.minX()), int(frame.minY()), int(frame.width()), int(frame.height())});
  }
  void close(const std::string& title) override { client_.destroy(windows_.at(title)); }
  void minimize(const std::string& title) override { desktop_.iconify(windows_.at(title)); }

  QuartzRect frame(const std::string& title) const override {
    const auto frame = desktop_.frame(windows_.at(title));
    return {double(frame.x), double(frame.y), double(frame.width), double(frame.height)};
  }
  bool isMinimized(const std::string& title) const override {
    return desktop_.hasState(windows_.at(title), "_NET_WM_STATE_HIDDEN") &&
           desktop_.values(windows_.at(title), "_PELLOW_HIDDEN").empty();
  }
  bool isShown(const std::string& title) const override {
    return desktop_.isShown(windows_.at(title));
  }

 private:
  DesktopSession& desktop_;
  desktop::TestClient client_;
  const ProcessID pid_;
  std::map<std::string, WindowID> windows_;
};

class LinuxHost final : public Host {
 public:
  LinuxHost() {
    unsetenv("SESSION_MANAGER");  // of whoever runs the tests
    for (const auto& [name, value] : desktop_.environment())
      if (name != "PATH") setenv(name.c_str(), value.c_str(), 1);
    signals_.emplace();
    application_.emplace();
    platform_ = LinuxPlatform::open(LinuxPlatform::Claim::now, log_, *signals_).value();
  }

  Platform& platform() override { return *platform_; }
  bool letsUsAct() override { return true; }

  bool until(const std::function<bool()>& holds) override {
    return desktop::eventually([&] {
      QCoreApplication::processEvents();
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
      tray_.work();
      return holds();
    });
  }

  std::unique_ptr<Guest> launch(const std::string& name) override {
    return std::make_unique<LinuxGuest>(desktop_, name);
  }

  bool showsPanel(const std::string& name) override {
    return !desktop_.shownWindows("pellow", name).empty();
  }

  void type(std::uint16_t keyCode, std::uint64_t modifierFlags) override {
    const desktop::KeySym letter = keyCode == key::t ? 't' : 'k';
    if (modifierFlags == 0) return desktop_.type({letter});
    desktop_.type({desktop::key::control, desktop::key::alt, desktop::key::super, letter});
  }
  void hold(std::uint16_t keyCode) override { desktop_.hold(keyCode == key::t ? 't' : 'k'); }
  void movePointer(QuartzPoint to) override { desktop_.movePointer(int(to.x), int(to.y)); }
  void pressButton() override { desktop_.press(); }
  void releaseButton() override { desktop_.release(); }

  void operate(const std::string& title) override {
    for (auto* const window : QApplication::topLevelWidgets())
      for (auto* const button : window->findChildren<QAbstractButton*>())
        if (button->isVisible() && button->text().toStdString() == title) return button->click();
    throw std::out_of_range("no button " + title);
  }
  void closeWindow(const std::string& title) override {
    for (auto* const window : QApplication::topLevelWidgets())
      if (window->isVisible() && window->windowTitle().toStdString() == title) {
        window->close();
        return;
      }
    throw std::out_of_range("no window " + title);
  }
  void pickColour(Colour colour) override {
    for (auto* const window : QApplication::topLevelWidgets())
      if (auto* const dialog = qobject_cast<QColorDialog*>(window))
        dialog->setCurrentColor(
            QColor::fromRgbF(float(colour.red()), float(colour.green()), float(colour.blue())));
  }

  void chooseFromStatusMenu(const std::string& title) override {
    until([&] { return tray_.docked() != 0; });
    choose(QuartzPoint{tray_.icon.x + 10.0, tray_.icon.y + 10.0}, 1, title);
  }
  void chooseFromContextMenu(QuartzPoint at, const std::string& title) override {
    choose(at, 3, title);
  }

  void send(TerminationSignal signal) override {
    constexpr int numbers[] = {SIGTERM, SIGINT, SIGHUP};
    kill(getpid(), numbers[int(signal)]);
  }

 private:
  void choose(QuartzPoint at, std::uint8_t button, const std::string& title) {
    const auto menu = [] { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); };
    until([&] { return !menu(); });
    desktop_.click(int(at.x), int(at.y), button);
    if (!until([&] { return menu() && menu()->isVisible(); }))
      throw std::runtime_error("no menu opens");
    for (auto* const action : menu()->actions())
      if (action->text().toStdString() == title) {
        const auto place = menu()->mapToGlobal(menu()->actionGeometry(action).center());
        desktop_.click(place.x(), place.y());
        until([&] { return !menu(); });
        return;
      }
    throw std::out_of_range("no item " + title);
  }

  DesktopSession desktop_;
  desktop::Tray tray_{desktop_.display(), 0xe8e8e8U};
  const Log log_{[](LogLevel, std::string_view message) { ADD_FAILURE() << message; }};
  std::optional<TerminationSignals> signals_;
  std::optional<QtApplication> application_;
  std::unique_ptr<LinuxPlatform> platform_;
};

}  // namespace

std::unique_ptr<Host> Host::make() { return std::make_unique<LinuxHost>(); }

}  // namespace pellow::contract
