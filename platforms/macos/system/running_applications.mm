#include "platforms/macos/system/running_applications.h"

#include <algorithm>
#include <utility>

#include "platforms/macos/foundation/main_queue.h"

// Tells that an observed property has changed, on whatever thread.
@interface PellowKeyValueObserver : NSObject {
 @public
  std::function<void()> onChange;
}
@end

@implementation PellowKeyValueObserver
- (void)observeValueForKeyPath:(NSString*)keyPath
                      ofObject:(id)object
                        change:(NSDictionary<NSKeyValueChangeKey, id>*)change
                       context:(void*)context {
  onChange();
}
@end

namespace pellow {
namespace {

NSString* const runningApplicationsKey = @"runningApplications";
NSString* const activationPolicyKey = @"activationPolicy";
NSString* const processIdentifierKey = @"processIdentifier";

}  // namespace

RunningApplications::RunningApplications(Handlers handlers)
    : handlers_(std::move(handlers)),
      observer_([[PellowKeyValueObserver alloc] init]),
      self_(std::make_shared<RunningApplications*>(this)) {
  // In a turn of its own: AppKit is in the middle of its change.
  observer_->onChange = [weak = std::weak_ptr(self_)] {
    hopToMain([weak] {
      if (const auto self = weak.lock()) (*self)->lookAgain();
    });
  };
  NSWorkspace* const workspace = NSWorkspace.sharedWorkspace;
  [workspace addObserver:observer_ forKeyPath:runningApplicationsKey options:0 context:nullptr];
  for (NSRunningApplication* application in workspace.runningApplications) {
    observe(application);
    known_.push_back(look(application));
  }
}

RunningApplications::~RunningApplications() {
  [NSWorkspace.sharedWorkspace removeObserver:observer_ forKeyPath:runningApplicationsKey];
  for (const auto& known : known_) stopObserving(known.application);
}

RunningApplications::Known RunningApplications::look(NSRunningApplication* application) {
  return {.application = application,
          .pid = application.processIdentifier,
          .isRegular = application.activationPolicy == NSApplicationActivationPolicyRegular};
}

void RunningApplications::observe(NSRunningApplication* application) {
  for (NSString* key in @[ activationPolicyKey, processIdentifierKey ])
    [application addObserver:observer_ forKeyPath:key options:0 context:nullptr];
}

void RunningApplications::stopObserving(NSRunningApplication* application) {
  for (NSString* key in @[ activationPolicyKey, processIdentifierKey ])
    [application removeObserver:observer_ forKeyPath:key];
}

// Handlers come last, as they may ask for anything.
void RunningApplications::lookAgain() {
  NSArray<NSRunningApplication*>* const running = NSWorkspace.sharedWorkspace.runningApplications;
  const auto before = std::exchange(known_, {});
  std::vector<std::pair<Known, Known>> changes;
  for (const auto& known : before) {
    if ([running containsObject:known.application]) {
      known_.push_back(look(known.application));
      changes.emplace_back(known, known_.back());
    } else {
      stopObserving(known.application);
      changes.emplace_back(known, Known{});
    }
  }
  for (NSRunningApplication* application in running) {
    const auto isIt = [&](const Known& known) { return [known.application isEqual:application]; };
    if (std::ranges::any_of(before, isIt)) continue;
    observe(application);
    known_.push_back(look(application));
    changes.emplace_back(Known{}, known_.back());
  }
  for (const auto& [then, now] : changes) tell(then, now);
}

void RunningApplications::tell(const Known& before, const Known& now) {
  const bool isSameProcess = before.pid == now.pid;
  if (before.pid > 0 && !isSameProcess) handlers_.didTerminate(before.pid);
  const bool wasRegular = before.isRegular && isSameProcess;
  if (now.pid > 0 && now.isRegular && !wasRegular) handlers_.didBecomeRegular(now.pid);
}

}  // namespace pellow
