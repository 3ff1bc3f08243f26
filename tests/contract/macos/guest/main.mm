#import <AppKit/AppKit.h>

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

// An application with plain windows that does what it is told, one command a line:
//
//   open X Y WIDTH HEIGHT TITLE   in Quartz space; answers "done"
//   close TITLE, minimize TITLE   answer "done"
//   look TITLE                    answers "X Y WIDTH HEIGHT MINIMIZED SHOWN", the last two 0 or 1

namespace {

NSMutableArray<NSWindow*>* const windows = [NSMutableArray array];
NSMutableSet<NSWindow*>* const minimized = [NSMutableSet set];  // all the way to the Dock

NSWindow* windowNamed(const std::string& title) {
  for (NSWindow* window in windows)
    if ([window.title isEqualToString:@(title.c_str())]) return window;
  return nil;
}

// Between Quartz and AppKit space, either way.
NSRect flipped(NSRect frame) {
  frame.origin.y = NSMaxY(NSScreen.screens.firstObject.frame) - NSMaxY(frame);
  return frame;
}

void open(const NSRect& frame, const std::string& title) {
  NSWindow* const window = [[NSWindow alloc]
      initWithContentRect:NSZeroRect
                styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                          NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable
                  backing:NSBackingStoreBuffered
                    defer:NO];
  window.releasedWhenClosed = NO;
  window.animationBehavior = NSWindowAnimationBehaviorNone;
  [windows addObject:window];
  window.title = @(title.c_str());
  [window setFrame:flipped(frame) display:YES];
  [NSApp activate];
  [window makeKeyAndOrderFront:nil];
  [window orderFrontRegardless];  // the activation may be refused
}

void close(NSWindow* window) {
  [window close];
  [windows removeObject:window];
}

std::string look(const std::string& title) {
  NSWindow* const window = windowNamed(title);
  const NSRect frame = flipped(window.frame);
  const bool isMinimized = window && [minimized containsObject:window];
  const bool isShown = window.visible && !window.miniaturized && !NSApp.hidden;
  std::ostringstream answer;
  answer << frame.origin.x << ' ' << frame.origin.y << ' ' << frame.size.width << ' '
         << frame.size.height << ' ' << isMinimized << ' ' << isShown;
  return answer.str();
}

std::string obey(const std::string& line) {
  std::istringstream words(line);
  std::string command;
  NSRect frame = NSZeroRect;
  words >> command;
  if (command == "open")
    words >> frame.origin.x >> frame.origin.y >> frame.size.width >> frame.size.height;
  std::string title;
  std::getline(words >> std::ws, title);
  if (command == "look") return look(title);
  if (command == "open") open(frame, title);
  if (command == "close") close(windowNamed(title));
  if (command == "minimize") [windowNamed(title) miniaturize:nil];
  return "done";
}

void followMinimizing() {
  NSNotificationCenter* const center = NSNotificationCenter.defaultCenter;
  [center addObserverForName:NSWindowDidMiniaturizeNotification
                      object:nil
                       queue:nil
                  usingBlock:^(NSNotification* notification) {
                    [minimized addObject:notification.object];
                  }];
  [center addObserverForName:NSWindowDidDeminiaturizeNotification
                      object:nil
                       queue:nil
                  usingBlock:^(NSNotification* notification) {
                    [minimized removeObject:notification.object];
                  }];
}

// On a thread of its own: the application ends with the test.
void readCommands() {
  for (std::string line; std::getline(std::cin, line);) {
    dispatch_async(dispatch_get_main_queue(), ^{
      std::puts(obey(line).c_str());
      std::fflush(stdout);
    });
  }
  dispatch_async(dispatch_get_main_queue(), ^{
    [NSApp terminate:nil];
  });
}

}  // namespace

int main() {
  @autoreleasepool {
    [NSApplication.sharedApplication setActivationPolicy:NSApplicationActivationPolicyRegular];
    followMinimizing();
    [NSThread detachNewThreadWithBlock:^{
      readCommands();
    }];
    [NSApp run];
  }
  return 0;
}
