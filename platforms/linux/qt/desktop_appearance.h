#pragma once

#include <optional>

#include "platforms/linux/qt/announced_theme.h"
#include "platforms/linux/qt/appearance_portal.h"
#include "platforms/linux/qt/application_colours.h"

namespace pellow {

// Gives the application light or dark colours, and the accent, as the desktop has them, and follows
// its changes. If the portal tells nothing, they are dark where those of GTK applications are: by
// the theme that is announced to toolkits, else by GTK's settings file, or by the preference for
// dark variants in that file. Colours that a desktop or a style has for Qt itself are left alone.
// Main thread, while there is a Qt application.
class DesktopAppearance {
 public:
  DesktopAppearance();

 private:
  bool isDark() const;
  void choose();

  const bool isOurs_;
  std::optional<ApplicationColours> shown_;
  AnnouncedTheme theme_{[this] { choose(); }};
  AppearancePortal portal_{[this] { choose(); }};
};

}  // namespace pellow
