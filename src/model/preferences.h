#pragma once

#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "base/notification_center.h"
#include "base/raw_value.h"
#include "model/mechanism.h"
#include "model/strip_edge.h"
#include "model/tab_scope.h"
#include "platform/user_defaults.h"

namespace pellow {

enum class Sharing { synced, thisMachine };

// One setting: its key in the user defaults and its value while none is stored.
template <class T>
struct Preference {
  std::string_view key;
  T registered;
  Sharing sharing = Sharing::synced;
  T unknown{};  // for a stored text that names no case of the enumeration
};

// The table of all settings other than zones, pins and shortcuts.
namespace preference {

inline constexpr Preference<Mechanism> mechanism{"mechanism", Mechanism::offscreen};
inline constexpr Preference<TabScope> tabScope{"tabScope", TabScope::window};
inline constexpr Preference<StripEdge> edge{
    // of an earlier version, for the first zone
    "edge", StripEdge::right, Sharing::thisMachine, StripEdge::right};
inline constexpr Preference<bool> showTitles{"showTitles", false};
inline constexpr Preference<bool> tabsOnAllScreens{"tabsOnAllScreens", false};
inline constexpr Preference<bool> useThumbnails{"useThumbnails", false};
inline constexpr Preference<bool> thumbnailTabs{"thumbnailTabs", true};
inline constexpr Preference<bool> animateFlight{"animateFlight", true};
inline constexpr Preference<double> animationDuration{"animationDuration", 0.32};  // seconds
inline constexpr Preference<double> tabSize{"tabSize", 34};                        // points
inline constexpr Preference<bool> autoHideStrip{"autoHideStrip", false};
inline constexpr Preference<bool> restoreOnActivation{"restoreOnActivation", true};
inline constexpr Preference<bool> pellowOnMinimize{"pellowOnMinimize", true};
inline constexpr Preference<bool> floatAboveWindows{"floatAboveWindows", true};
inline constexpr Preference<bool> previewOnHover{"previewOnHover", true};
inline constexpr Preference<double> previewSize{"previewSize", 320};  // points
inline constexpr Preference<bool> syncSettings{"syncSettings", true, Sharing::thisMachine};
// Whether the program has introduced itself, where it does.
inline constexpr Preference<bool> firstMinuteShown{"firstMinuteShown", false, Sharing::thisMachine};

// In the order the synced ones are written.
inline constexpr std::tuple all{mechanism,        tabScope,          edge,
                                showTitles,       tabsOnAllScreens,  useThumbnails,
                                thumbnailTabs,    animateFlight,     animationDuration,
                                tabSize,          autoHideStrip,     restoreOnActivation,
                                pellowOnMinimize, floatAboveWindows, previewOnHover,
                                previewSize,      syncSettings,      firstMinuteShown};

}  // namespace preference

// The one door to the user's settings other than zones, pins and shortcuts. They live in the user
// defaults; nothing is cached. Main thread.
class Preferences {
 public:
  // Posted by every write.
  static constexpr const char* didChange = "pellow.preferencesDidChange";

  using Values = std::map<std::string, DefaultsValue, std::less<>>;

  // Registers the default value of every setting.
  Preferences(UserDefaults& defaults, NotificationCenter& notifications);

  // `preferences.value(preference::animateFlight)`.
  template <class T>
  T value(const Preference<T>& preference) const;
  template <class T>
  void set(const Preference<T>& preference, std::type_identity_t<T> value);

  Mechanism mechanism() const { return value(preference::mechanism); }
  TabScope tabScope() const { return value(preference::tabScope); }

  // The size of a tab where neither it nor its zone has one, from 20 to 72 points.
  double tabSize() const;

  // How long strips slide and pictures fly, from 0.1 to 1.2 seconds.
  double animationDuration() const;

  // How wide the preview of a tab is, from 160 to 640 points.
  double previewSize() const;

  // Whether tabs show the picture of their window instead of the application's icon.
  bool pictureTabs() const;

  // The synced settings as they stand, registered values included.
  Values exportForSync() const;

  // Writes every synced setting among `values`, even one stored already, and posts once if there is
  // any. Ignores the others.
  void applySynced(const Values& values);

 private:
  void write(std::string_view key, DefaultsValue value);
  void post() const;

  UserDefaults& defaults_;
  NotificationCenter& notifications_;
};

template <class T>
T Preferences::value(const Preference<T>& preference) const {
  if constexpr (std::is_same_v<T, bool>)
    return boolean(defaults_, preference.key);
  else if constexpr (std::is_same_v<T, double>)
    return number(defaults_, preference.key);
  else
    return fromRawValue<T>(text(defaults_, preference.key).value_or(""))
        .value_or(preference.unknown);
}

template <class T>
void Preferences::set(const Preference<T>& preference, std::type_identity_t<T> value) {
  if constexpr (std::is_enum_v<T>)
    write(preference.key, std::string(rawValue(value)));
  else
    write(preference.key, value);
  post();
}

}  // namespace pellow
