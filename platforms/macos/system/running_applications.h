#pragma once

#import <AppKit/AppKit.h>

#include <functional>
#include <memory>
#include <vector>

#include "platform/ax_element.h"

@class PellowKeyValueObserver;

namespace pellow {

// Watches which applications run, agents included, for which the system posts no launch notice.
// Main thread.
class RunningApplications {
 public:
  struct Handlers {
    std::function<void(ProcessID)> didBecomeRegular;
    std::function<void(ProcessID)> didTerminate;
  };

  // Calls the handlers on the main queue; those that run now are not told of.
  explicit RunningApplications(Handlers handlers);
  ~RunningApplications();
  RunningApplications(const RunningApplications&) = delete;
  RunningApplications& operator=(const RunningApplications&) = delete;

 private:
  // What was true of an application at the last look. One that has ended may not tell any more, and
  // one that the system ends and starts again by itself has another process then.
  struct Known {
    NSRunningApplication* application = nil;
    ProcessID pid = -1;  // no process
    bool isRegular = false;
  };

  static Known look(NSRunningApplication* application);
  void observe(NSRunningApplication* application);
  void stopObserving(NSRunningApplication* application);
  void lookAgain();
  void tell(const Known& before, const Known& now);

  Handlers handlers_;
  std::vector<Known> known_;
  PellowKeyValueObserver* observer_;
  const std::shared_ptr<RunningApplications*> self_;  // hops find it only while it lives
};

}  // namespace pellow
