#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/workspace.h"
#include "platforms/linux/x11/desktop_entries.h"
#include "platforms/linux/x11/x11_window.h"

namespace pellow {

// What users know applications by: their names and icons, from the desktop files, the icon theme
// and the windows. Main thread.
class ApplicationFaces {
 public:
  // The picture of a theme icon or an icon file.
  using LoadIcon = std::function<std::optional<Image>(const std::string& iconName)>;

  ApplicationFaces(X11Server& server, LoadIcon loadIcon)
      : server_(server), loadIcon_(std::move(loadIcon)) {}

  // What to look at in windows that tell what their application is.
  static constexpr Facet facets = Facet::kind | Facet::state | Facet::wmClass;

  // The application that owns these windows, at least one of them.
  RunningApplication describe(ProcessID pid, const std::vector<WindowFacts>& windows);

  // The application has ended.
  void forget(ProcessID pid) { windowIcons_.erase(pid); }

 private:
  std::optional<Image> icon(const DesktopEntry* entry, ProcessID pid, xcb_window_t window);
  std::optional<Image> themeIcon(const std::string& name);

  X11Server& server_;
  LoadIcon loadIcon_;
  DesktopEntries entries_ = DesktopEntries::ofEnvironment();
  std::map<std::string, std::optional<Image>> themeIcons_;
  std::map<ProcessID, Image> windowIcons_;  // of applications that the theme does not know
};

}  // namespace pellow
