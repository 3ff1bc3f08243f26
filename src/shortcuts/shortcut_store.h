#pragma once

#include <array>
#include <functional>
#include <map>
#include <string>

#include "base/notification_center.h"
#include "platform/user_defaults.h"
#include "shortcuts/shortcut.h"
#include "shortcuts/shortcut_action.h"

namespace pellow {

// The user's own bindings; an action without one has its default. Every change goes to the user
// defaults at once. Main thread.
class ShortcutStore {
 public:
  // Posted after every change.
  static constexpr const char* didChange = "pellow.shortcutsDidChange";

  // By the raw value of the action. Keys of no action are kept and never read.
  using Overrides = std::map<std::string, Shortcut, std::less<>>;

  ShortcutStore(UserDefaults& defaults, NotificationCenter& notifications);

  // Asked on every key press anywhere in the system: neither allocates nor reads the defaults.
  const Shortcut& shortcut(ShortcutAction action) const;

  // Whether the user bound the action, even to its default.
  bool isCustom(ShortcutAction action) const;

  void set(ShortcutAction action, Shortcut shortcut);
  void restoreDefault(ShortcutAction action);

  const Overrides& overrides() const { return overrides_; }
  void replaceOverrides(Overrides overrides);

 private:
  void load();
  void save();
  void refreshBindings();

  UserDefaults& defaults_;
  NotificationCenter& notifications_;
  Overrides overrides_;
  std::array<Shortcut, allCases<ShortcutAction>().size()> bindings_;  // by action
};

}  // namespace pellow
