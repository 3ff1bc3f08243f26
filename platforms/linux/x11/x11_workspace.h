#pragma once

#include <deque>
#include <functional>
#include <vector>

#include "platform/workspace.h"
#include "platforms/linux/x11/application_activation.h"
#include "platforms/linux/x11/application_faces.h"
#include "platforms/linux/x11/application_hiding.h"
#include "platforms/linux/x11/application_lifecycle.h"
#include "platforms/linux/x11/keyboard_rest.h"

namespace pellow {

// Applications are the processes that own windows in the window manager's list. One that has closed
// its last window is no longer an application. While the server does not answer the main loop, the
// ports answer what they last knew, and what they are asked to do is put off.
class X11Workspace : public Workspace {
 public:
  // `pollSet` is an epoll descriptor that the desktop waits on, for processes that are about to
  // end.
  X11Workspace(X11Server& server, Foreground& foreground, Iconifier& iconifier,
               WindowEvents& windowEvents, ActiveWindow& activeWindow, int pollSet,
               ApplicationFaces::LoadIcon loadIcon);

  std::vector<RunningApplication> runningApplications() override;
  std::optional<RunningApplication> application(ProcessID pid) override;
  std::optional<ProcessID> frontmostApplication() override;
  bool hide(ProcessID pid) override;
  bool unhide(ProcessID pid) override;
  bool activate(ProcessID pid) override;
  void activateDesktop() override;
  std::vector<WindowOnScreen> windowsOnScreen() override;
  bool keepsWindowsOnDisplays() override;
  std::string windowServerDescription() override;
  bool hasWindowsOnOtherSpaces(ProcessID pid) override;
  bool open(std::string_view url) override;
  Subscription onDidActivateApplication(std::function<void(ProcessID)> observer) override;
  Subscription onDidBecomeRegular(std::function<void(ProcessID)> observer) override;
  Subscription onDidTerminateApplication(std::function<void(ProcessID)> observer) override;
  Subscription onDidChangeActiveSpace(std::function<void()> observer) override;

  // Does what was asked while the server did not answer. What is asked before that waits behind it.
  void catchUp();

  // Another desktop is shown.
  void currentDesktopChanged() { spaceObservers_.notify(); }
  // The list of clients has changed.
  void windowsChanged() { lifecycle_.windowsChanged(); }
  // A descriptor in the poll set is ready.
  void processEnded() { lifecycle_.processEnded(); }

 private:
  struct Request {
    ProcessID pid;
    std::function<bool(ProcessID)> act;
  };

  // Carries out the request, or puts it off until the server answers; then the answer is that of
  // one that goes well.
  bool perform(Request request);
  std::optional<RunningApplication> lookFor(ProcessID pid, Deadline deadline);
  std::vector<RunningApplication> lookForAll(Deadline deadline);
  RunningApplication describe(ProcessID pid, const std::vector<WindowFacts>& windows);
  RunningApplication thisProcess() const;

  X11Server& server_;
  Foreground& foreground_;
  ApplicationFaces faces_;
  ApplicationLifecycle lifecycle_;
  Subscription endWatch_;
  ApplicationHiding hiding_;
  ApplicationActivation activation_;
  KeyboardRest keyboardRest_;
  HandlerList<void()> spaceObservers_;
  std::deque<Request> requests_;  // put off
  // What was last known, for as long as the server does not answer.
  std::vector<RunningApplication> applications_;
  std::vector<WindowOnScreen> onScreen_;
  bool areWindowsKept_ = false;
};

}  // namespace pellow
