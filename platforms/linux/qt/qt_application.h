#pragma once

#include <QApplication>
#include <QObject>
#include <array>

namespace pellow {

// Qt on an X display. It neither ends with its last window nor takes part in the session's own
// saving and restoring of programs. If the display cannot be opened, Qt ends the process.
class QtApplication {
 public:
  QtApplication();

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

  struct WindowFilter : QObject {
    bool eventFilter(QObject* object, QEvent* event) override;
  } windowFilter_;
};

}  // namespace pellow
