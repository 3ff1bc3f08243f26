#pragma once

#include <functional>

#include "base/texts.h"
#include "model/preferences.h"
#include "platform/accessibility.h"
#include "platform/form.h"
#include "platform/screen_capture.h"
#include "platform/workspace.h"

namespace pellow {

// What the user has granted, and pictures of windows, which need one of the permissions. Main
// thread.
struct PermissionsPane {
  // These outlive the form.
  const Accessibility& accessibility;
  Preferences& preferences;
  ScreenCapture& screenCapture;
  const Texts& texts;
  Workspace& workspace;

  std::function<void()> onRelaunch;

  FormPane form() const;
};

}  // namespace pellow
