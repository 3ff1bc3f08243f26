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

// The running applications. Main thread, unless a member says otherwise.
class Workspace {
 public:
  virtual ~Workspace() = default;

  // In the order in which they were started, this process included.
  virtual std::vector<RunningApplication> runningApplications() = 0;

  // Nothing when the process does not run, or is no application.
  virtual std::optional<RunningApplication> application(ProcessID pid) = 0;

  // The application that receives the keys. Any thread.
  virtual std::optional<ProcessID> frontmostApplication() = 0;

  // Asks for all windows of the application to be hidden; false when it does not run or the system
  // refuses at once. Whether they are, `hidden` of its element tells, a moment later.
  virtual bool hide(ProcessID pid) = 0;

  // Asks for them to be shown again; false when the application does not run.
  virtual bool unhide(ProcessID pid) = 0;

  // Asks for the application to become active, its front window in front; false when it does not
  // run. The system may take that for a mere wish: to write `frontmost` of its element is more.
  virtual bool activate(ProcessID pid) = 0;

  // Opens a URL with whatever the user opens such with; false when nothing does.
  virtual bool open(std::string_view url) = 0;

  // Hears of every application that becomes active, after it has; also of this process.
  virtual Subscription onDidActivateApplication(std::function<void(ProcessID)> observer) = 0;

  // Hears of every application that becomes a regular one, when it is started or later. It may not
  // be ready to be observed yet.
  virtual Subscription onDidBecomeRegular(std::function<void(ProcessID)> observer) = 0;

  // Hears of every application that has ended, after its windows are gone.
  virtual Subscription onDidTerminateApplication(std::function<void(ProcessID)> observer) = 0;
};

}  // namespace pellow
