#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/subscription.h"
#include "platform/ax_element.h"
#include "platform/image.h"

namespace pellow {

enum class ActivationPolicy {
  regular,     // an ordinary application with a place in the Dock
  accessory,   // no place in the Dock, but windows
  prohibited,  // a background process
};

struct RunningApplication {
  ProcessID pid = 0;
  std::optional<std::string> bundleID;  // absent when the application has none
  std::string localizedName;
  std::optional<Image> icon;
  ActivationPolicy activationPolicy = ActivationPolicy::regular;
};

// An ordinary window, of whatever process.
struct WindowOnScreen {
  ProcessID owner = 0;
  QuartzRect frame;

  bool operator==(const WindowOnScreen&) const = default;
};

// The running applications. Main thread unless told otherwise.
class Workspace {
 public:
  virtual ~Workspace() = default;

  // In the order they were started, this process included.
  virtual std::vector<RunningApplication> runningApplications() = 0;

  // Nothing when the process is not running or is not an application.
  virtual std::optional<RunningApplication> application(ProcessID pid) = 0;

  // The application with the keyboard. Any thread.
  virtual std::optional<ProcessID> frontmostApplication() = 0;

  // Asks to hide all windows of the application; false when it is not running or the system refuses
  // at once. Whether they are hidden, `hidden` of its element tells a moment later.
  virtual bool hide(ProcessID pid) = 0;

  // Asks to show them again; false when the application is not running.
  virtual bool unhide(ProcessID pid) = 0;

  // Asks to make the application active, its front window in front; false when it is not running.
  // The system may take this as a mere wish; writing `frontmost` of its element is stronger.
  virtual bool activate(ProcessID pid) = 0;

  // Gives the keyboard to the desktop: no window has it until the user turns to one.
  virtual void activateDesktop() = 0;

  // The windows of this Space that are neither minimized nor hidden, front to back; those that lie
  // outside of all displays count.
  virtual std::vector<WindowOnScreen> windowsOnScreen() = 0;

  // Whether the desktop keeps windows on its displays, wherever they are asked to go. It may come
  // to do so, or no longer.
  virtual bool keepsWindowsOnDisplays() = 0;

  // Who places and paints windows here, in a few words for a report: "Openbox on X11, with no
  // compositor".
  virtual std::string windowServerDescription() = 0;

  // Whether the application may have windows on Spaces that are not shown: its `windows` attribute
  // leaves those out.
  virtual bool hasWindowsOnOtherSpaces(ProcessID pid) = 0;

  // Opens a URL in the user's application for it; false when there is none.
  virtual bool open(std::string_view url) = 0;

  // Called after an application, or this process, has become active.
  virtual Subscription onDidActivateApplication(std::function<void(ProcessID)> observer) = 0;

  // Called when an application becomes a regular one, at its start or later. It may not be ready
  // for observers yet.
  virtual Subscription onDidBecomeRegular(std::function<void(ProcessID)> observer) = 0;

  // Called after an application has ended and its windows are gone.
  virtual Subscription onDidTerminateApplication(std::function<void(ProcessID)> observer) = 0;

  // Called after another Space has come into view.
  virtual Subscription onDidChangeActiveSpace(std::function<void()> observer) = 0;
};

}  // namespace pellow
