#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>

#include "base/notification_center.h"
#include "model/mechanism.h"
#include "model/tab_scope.h"
#include "platform/user_defaults.h"

namespace pellow {

// The keys of the user defaults that hold the user's settings. Readers take booleans and numbers
// straight from there: `boolean(defaults, preference::autoHideStrip)`; every one has a default.
namespace preference {
inline constexpr std::string_view mechanism = "mechanism";
inline constexpr std::string_view tabScope = "tabScope";
inline constexpr std::string_view edge = "edge";  // of an earlier version, for the first zone
inline constexpr std::string_view showTitles = "showTitles";
inline constexpr std::string_view tabsOnAllScreens = "tabsOnAllScreens";
inline constexpr std::string_view useThumbnails = "useThumbnails";
inline constexpr std::string_view thumbnailTabs = "thumbnailTabs";
inline constexpr std::string_view animateFlight = "animateFlight";
inline constexpr std::string_view animationDuration = "animationDuration";  // seconds
inline constexpr std::string_view tabSize = "tabSize";                      // points
inline constexpr std::string_view autoHideStrip = "autoHideStrip";
inline constexpr std::string_view restoreOnActivation = "restoreOnActivation";
inline constexpr std::string_view pellowOnMinimize = "pellowOnMinimize";
inline constexpr std::string_view floatAboveWindows = "floatAboveWindows";
inline constexpr std::string_view previewOnHover = "previewOnHover";
inline constexpr std::string_view previewSize = "previewSize";  // points
inline constexpr std::string_view syncSettings = "syncSettings";
}  // namespace preference

// The user's settings other than zones, pins and shortcuts. Whoever writes a boolean or a number
// posts `didChange`. Nothing is cached. Main thread.
class Preferences {
 public:
  static constexpr const char* didChange = "pellow.preferencesDidChange";

  using Values = std::map<std::string, DefaultsValue, std::less<>>;

  // The keys that the user's machines share, in the order in which they are written.
  static constexpr std::array<std::string_view, 15> syncableKeys{preference::mechanism,
                                                                 preference::tabScope,
                                                                 preference::showTitles,
                                                                 preference::tabsOnAllScreens,
                                                                 preference::useThumbnails,
                                                                 preference::thumbnailTabs,
                                                                 preference::animateFlight,
                                                                 preference::animationDuration,
                                                                 preference::tabSize,
                                                                 preference::autoHideStrip,
                                                                 preference::restoreOnActivation,
                                                                 preference::pellowOnMinimize,
                                                                 preference::floatAboveWindows,
                                                                 preference::previewOnHover,
                                                                 preference::previewSize};

  // Registers the default of every key.
  Preferences(UserDefaults& defaults, NotificationCenter& notifications);

  // A text without a meaning reads as `minimize`.
  Mechanism mechanism() const;
  void setMechanism(Mechanism mechanism);

  // Anything but "app" reads as `window`.
  TabScope tabScope() const;
  void setTabScope(TabScope scope);

  // The size of a tab where neither it nor its zone has one, from 20 to 72 points.
  double tabSize() const;

  // Whether tabs show the picture of their window instead of the application's icon.
  bool pictureTabs() const;

  // The shared settings as they stand, registered defaults included.
  Values exportForSync() const;

  // Writes every shared setting among `values`, whatever is stored now, and posts once if there was
  // one. The others are ignored.
  void applySynced(const Values& values);

 private:
  void post() const;

  UserDefaults& defaults_;
  NotificationCenter& notifications_;
};

}  // namespace pellow
