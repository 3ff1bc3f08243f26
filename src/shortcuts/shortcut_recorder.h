#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/log.h"
#include "base/subscription.h"
#include "base/task.h"
#include "base/texts.h"
#include "platform/event_monitors.h"
#include "platform/symbolic_hot_keys.h"
#include "shortcuts/shortcut.h"
#include "shortcuts/shortcut_action.h"
#include "shortcuts/shortcut_store.h"
#include "views/alert_presenter.h"

namespace pellow {

// The button that shows the binding of one action and records another, as data. While it records,
// it takes every key press for the program's own windows; the first one ends the recording, and
// fires no shortcut. Main thread.
class ShortcutRecorder {
 public:
  // All of it outlives the recorder.
  struct Surroundings {
    AlertPresenter& alerts;
    EventMonitors& eventMonitors;
    const Log& log;
    ShortcutStore& shortcuts;
    const SymbolicHotKeys& symbolicHotKeys;
    const Texts& texts;
  };

  ShortcutRecorder(ShortcutAction action, const Surroundings& surroundings);
  ShortcutRecorder(const ShortcutRecorder&) = delete;
  ShortcutRecorder& operator=(const ShortcutRecorder&) = delete;

  ShortcutAction action() const { return action_; }

  // What the button says now.
  std::string title() const;
  std::string_view tooltip() const;

  // A recording that has begun goes on; one that the system refuses does not begin.
  void beginRecording();
  void endRecording();
  bool isRecording() const { return static_cast<bool>(monitor_); }

  // Called whenever a recording ends, whatever came of it.
  std::function<void()> onRecorded;

 private:
  void record(const KeyEvent& event);
  std::optional<Alert> refusalOf(const Shortcut& candidate) const;
  Task<> warn(Alert alert);

  ShortcutAction action_;
  Surroundings around_;
  Subscription monitor_;  // while it records
  TaskScope warning_;
};

}  // namespace pellow
