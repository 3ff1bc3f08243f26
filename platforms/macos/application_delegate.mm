#include "platforms/macos/application_delegate.h"

#import <dispatch/dispatch.h>

#include <csignal>
#include <memory>

#include "app/app_delegate.h"
#include "app/report_delegate.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/mac_platform.h"

namespace {

struct Program {
  Program(std::optional<pellow::ReportMode> report, const pellow::Log& log) : platform(log) {
    if (report) {
      reportDelegate.emplace(platform, *report);
    } else {
      appDelegate.emplace(platform);
    }
  }

  void applicationDidFinishLaunching() {
    if (reportDelegate) reportDelegate->applicationDidFinishLaunching();
    if (appDelegate) appDelegate->applicationDidFinishLaunching();
  }

  void applicationWillTerminate() {
    if (reportDelegate) reportDelegate->applicationWillTerminate();
    if (appDelegate) appDelegate->applicationWillTerminate();
  }

  pellow::MacPlatform platform;
  // One of them.
  std::optional<pellow::AppDelegate> appDelegate;
  std::optional<pellow::ReportDelegate> reportDelegate;
};

}  // namespace

@implementation PellowApplicationDelegate {
  std::optional<pellow::ReportMode> report_;
  std::optional<pellow::ProcessID> predecessor_;
  const pellow::Log* log_;
  dispatch_source_t predecessorEnd_;
  id<NSObject> activity_;
  std::unique_ptr<Program> program_;
}

- (instancetype)initWithReport:(std::optional<pellow::ReportMode>)report
                   predecessor:(std::optional<pellow::ProcessID>)predecessor
                           log:(const pellow::Log*)log {
  if ((self = [super init])) {
    report_ = report;
    predecessor_ = predecessor;
    log_ = log;
  }
  return self;
}

// Windows would stay hidden if the system ended the process suddenly or let it nap.
- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  activity_ = [NSProcessInfo.processInfo
      beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                        reason:@"Windows that are put away must come back"];
  if (predecessor_) {
    [self beginAfter:*predecessor_];
  } else {
    [self begin];
  }
}

// The loop runs meanwhile: the system tells the predecessor that this process has started only when
// it does, and the predecessor ends only then.
- (void)beginAfter:(pellow::ProcessID)predecessor {
  predecessorEnd_ =
      dispatch_source_create(DISPATCH_SOURCE_TYPE_PROC, static_cast<uintptr_t>(predecessor),
                             DISPATCH_PROC_EXIT, dispatch_get_main_queue());
  if (!predecessorEnd_) return [self begin];
  dispatch_source_set_event_handler(predecessorEnd_, ^{
    [self begin];
  });
  dispatch_activate(predecessorEnd_);
  if (kill(predecessor, 0) != 0) [self begin];  // it has ended already
}

// The user defaults are read only now: a predecessor writes them until it ends.
- (void)begin {
  if (program_) return;
  if (predecessorEnd_) dispatch_source_cancel(predecessorEnd_);
  pellow::runInPool([self] {
    program_ = std::make_unique<Program>(report_, *log_);
    program_->applicationDidFinishLaunching();
  });
}

- (void)applicationWillTerminate:(NSNotification*)notification {
  pellow::runInPool([self] {
    if (program_) program_->applicationWillTerminate();
  });
  CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication);
}

- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)application {
  return YES;
}

@end
