#pragma once

#include <QColor>
#include <QDBusServiceWatcher>
#include <QTimer>
#include <QVariant>
#include <functional>
#include <optional>

namespace pellow {

// What the user prefers, as the settings portal of the desktop tells over the session bus. It is
// asked once the main loop runs, never waited for, and may change its answers at any time. Main
// thread, while there is a Qt application.
class AppearancePortal {
 public:
  // `onChange` is called when an answer has come.
  explicit AppearancePortal(std::function<void()> onChange);

  // Nothing while there is no answer, or the user has no preference.
  std::optional<bool> isDark() const { return isDark_; }
  std::optional<QColor> accent() const { return accent_; }

 private:
  void follow();
  void ask();
  void ask(const char* key, std::function<void(const QVariant&)> take);

  std::function<void()> onChange_;
  std::optional<bool> isDark_;
  std::optional<QColor> accent_;
  std::optional<QDBusServiceWatcher> coming_;
  QTimer news_;  // started by what may change an answer; ends first, and with it the questions
};

}  // namespace pellow
