#pragma once

#include <QColor>
#include <optional>

namespace pellow {

// The colours of windows, menus and controls on a desktop that has none for Qt.
struct ApplicationColours {
  bool areDark = false;
  std::optional<QColor> accent;  // of the user's choice; nothing: our own

  bool operator==(const ApplicationColours&) const = default;

  // Main thread, while there is a Qt application.
  void apply() const;
};

}  // namespace pellow
