#include "platforms/macos/system/mac_process.h"

#import <AppKit/AppKit.h>
#import <CoreFoundation/CoreFoundation.h>
#import <dispatch/dispatch.h>

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "platforms/macos/foundation/error.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"
#include "platforms/posix/standard_output.h"

namespace pellow {
namespace {

int numberOf(TerminationSignal signal) {
  switch (signal) {
    case TerminationSignal::terminate:
      return SIGTERM;
    case TerminationSignal::interrupt:
      return SIGINT;
    case TerminationSignal::hangUp:
      return SIGHUP;
  }
  return SIGTERM;
}

NSWorkspaceOpenConfiguration* newInstance() {
  NSWorkspaceOpenConfiguration* const configuration = [NSWorkspaceOpenConfiguration configuration];
  configuration.createsNewApplicationInstance = YES;
  configuration.activates = NO;
  configuration.addsToRecentItems = NO;
  configuration.environment =
      @{toNSString(MacProcess::predecessorVariable) : toNSString(std::to_string(getpid()))};
  return configuration;
}

}  // namespace

ProcessID MacProcess::pid() const { return getpid(); }

void MacProcess::becomeAccessory() {
  [NSApplication.sharedApplication setActivationPolicy:NSApplicationActivationPolicyAccessory];
}

// A source sees what is ignored, and an ignored signal does not end the process meanwhile.
Subscription MacProcess::onSignal(TerminationSignal signal, std::function<void()> handler) {
  const auto number = numberOf(signal);
  std::signal(number, SIG_IGN);
  auto held = std::make_shared<std::function<void()>>(std::move(handler));
  const std::weak_ptr weak = held;
  dispatch_source_t const source = dispatch_source_create(
      DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<uintptr_t>(number), 0, dispatch_get_main_queue());
  dispatch_source_set_event_handler(source, ^{
    runInPool([&] {
      if (const auto live = weak.lock()) (*live)();
    });
  });
  dispatch_activate(source);
  return Subscription([source, held = std::move(held)]() mutable {
    dispatch_source_cancel(source);
    held.reset();
  });
}

void MacProcess::print(std::string_view line) { printLine(line); }

void MacProcess::exit(int status) {
  CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication);
  std::exit(status);
}

// Not by the main queue: termination never returns from there, and what it waits for may need it.
void MacProcess::terminate() {
  CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
    [NSApp terminate:nil];
  });
  CFRunLoopWakeUp(CFRunLoopGetMain());
}

void MacProcess::launchNewInstance(
    std::function<void(std::expected<void, SystemError>)> onLaunched) {
  // The block may be dropped on any thread.
  const auto waiting = std::make_shared<decltype(onLaunched)>(std::move(onLaunched));
  [NSWorkspace.sharedWorkspace
      openApplicationAtURL:NSBundle.mainBundle.bundleURL
             configuration:newInstance()
         completionHandler:^(NSRunningApplication* application, NSError* error) {
           std::expected<void, SystemError> outcome;
           if (!application) outcome = std::unexpected(toSystemError(error));
           hopToMain([waiting, outcome] { std::exchange(*waiting, nullptr)(outcome); });
         }];
}

}  // namespace pellow
