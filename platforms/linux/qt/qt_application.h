#pragma once

#include <QApplication>
#include <QObject>
#include <array>
#include <functional>

#include "platforms/linux/qt/desktop_appearance.h"

namespace pellow {

// Qt on an X display. It does not end with its last window. A session manager asks it to save
// itself and tells it to end, and never starts it again: the login item does. If the display cannot
// be opened, Qt ends the process.
class QtApplication {
 public:
  QtApplication();

  // Called when the session is saved, most often because it ends: the session manager waits for the
  // return, and may then end the program or not.
  std::function<void()> onSaveSession;

  // Runs the main loop until the program is told to terminate.
  int run() { return QApplication::exec(); }

 private:
  // Qt keeps references to both. The option wins over the environment.
  std::array<char, 7> name_{"pellow"};
  std::array<char, 10> option_{"-platform"};
  std::array<char, 4> platform_{"xcb"};
  std::array<char*, 4> arguments_{name_.data(), option_.data(), platform_.data(), nullptr};
  int count_ = 3;
  QApplication application_;
  DesktopAppearance appearance_;

  struct Filter : QObject {
    bool eventFilter(QObject* object, QEvent* event) override;
  } filter_;
};

}  // namespace pellow
