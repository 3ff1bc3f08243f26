#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/texts.h"
#include "model/preferences.h"
#include "platform/form.h"
#include "platform/login_item.h"
#include "platform/update_framework.h"
#include "platform/workspace.h"
#include "shortcuts/shortcut_store.h"

namespace pellow {

// How windows go, how strips behave, and what the program does by itself. Main thread.
struct GeneralPane {
  // These outlive the form.
  const LoginItem& loginItem;
  Preferences& preferences;
  const ShortcutStore& shortcuts;
  const Texts& texts;
  const UpdateFramework& updates;
  Workspace& workspace;

  std::string syncStatus;
  std::function<void(bool)> onSetLaunchAtLogin;
  std::function<void()> onCheckForUpdates;
  std::function<void(bool)> onSetAutomaticallyChecks;

  FormPane form() const;

 private:
  using Elements = std::vector<FormElement>;

  void addFirstMinute(Elements& elements) const;
  void addMechanism(Elements& elements) const;
  void addScope(Elements& elements) const;
  void addTriggers(Elements& elements) const;
  void addStrip(Elements& elements) const;
  void addProgram(Elements& elements) const;
  void addUpdates(Elements& elements) const;
};

}  // namespace pellow
