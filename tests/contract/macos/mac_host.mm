#import <AppKit/AppKit.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "platforms/macos/foundation/cf.h"
#include "platforms/macos/foundation/colour.h"
#include "platforms/macos/foundation/text.h"
#include "platforms/macos/mac_platform.h"
#include "tests/contract/host.h"

// The desktop that this process finds, with all that is on it. Keys and pointer are those of the
// user, who keeps the hands off meanwhile.

namespace pellow::contract {
namespace {

constexpr NSTimeInterval patience = 30;  // no measure of speed: it only ends a failed test

class MacGuest final : public Guest {
 public:
  MacGuest() {
    NSURL* const folder = NSBundle.mainBundle.executableURL.URLByDeletingLastPathComponent;
    task_.executableURL = [folder URLByAppendingPathComponent:@"pellow_guest"];
    task_.standardInput = input_;
    task_.standardOutput = output_;
    NSError* error = nil;
    if (![task_ launchAndReturnError:&error])
      throw std::runtime_error(toText(error.localizedDescription));
  }

  // Not by SIGTERM: what this process ignores, its children do, too.
  ~MacGuest() override {
    kill(pid(), SIGKILL);
    [task_ waitUntilExit];
  }

  ProcessID pid() const override { return task_.processIdentifier; }

  void open(const std::string& title, const QuartzRect& frame) override {
    std::ostringstream command;
    command << "open " << frame.minX() << ' ' << frame.minY() << ' ' << frame.width() << ' '
            << frame.height() << ' ' << title;
    tell(command.str());
  }
  void close(const std::string& title) override { tell("close " + title); }
  void minimize(const std::string& title) override { tell("minimize " + title); }

  QuartzRect frame(const std::string& title) const override { return look(title).frame; }
  bool isMinimized(const std::string& title) const override { return look(title).isMinimized; }
  bool isShown(const std::string& title) const override { return look(title).isShown; }

 private:
  struct Look {
    QuartzRect frame;
    bool isMinimized = false;
    bool isShown = false;
  };

  Look look(const std::string& title) const {
    Look look;
    std::istringstream answer(tell("look " + title));
    answer >> look.frame.origin.x >> look.frame.origin.y >> look.frame.size.width >>
        look.frame.size.height >> look.isMinimized >> look.isShown;
    return look;
  }

  // Waits for the answer: one line.
  std::string tell(const std::string& command) const {
    [input_.fileHandleForWriting
        writeData:[toNSString(command + "\n") dataUsingEncoding:NSUTF8StringEncoding]];
    std::string line;
    while (!line.ends_with('\n')) {
      NSData* const data = output_.fileHandleForReading.availableData;
      if (data.length == 0) throw std::runtime_error("the guest does not answer");
      line.append(static_cast<const char*>(data.bytes), data.length);
    }
    return line;
  }

  NSTask* const task_ = [[NSTask alloc] init];
  NSPipe* const input_ = [NSPipe pipe];
  NSPipe* const output_ = [NSPipe pipe];
};

NSButton* buttonIn(NSView* view, NSString* title) {
  if ([view isKindOfClass:NSButton.class] && [((NSButton*)view).title isEqualToString:title])
    return (NSButton*)view;
  for (NSView* child in view.subviews)
    if (NSButton* const found = buttonIn(child, title)) return found;
  return nil;
}

NSStatusBarButton* statusButtonIn(NSView* view) {
  if ([view isKindOfClass:NSStatusBarButton.class]) return (NSStatusBarButton*)view;
  for (NSView* child in view.subviews)
    if (NSStatusBarButton* const found = statusButtonIn(child)) return found;
  return nil;
}

// Chooses the item from the next menu that opens.
class MenuChoice {
 public:
  explicit MenuChoice(NSString* title) {
    const auto hasOpened = std::make_shared<bool>();
    observe(NSMenuDidBeginTrackingNotification, ^(NSNotification* notification) {
      if (!std::exchange(*hasOpened, true)) chooseSoon(notification.object, title);
    });
    observe(NSMenuDidEndTrackingNotification,
            [hasClosed = hasClosed_](NSNotification*) { *hasClosed = true; });
  }
  ~MenuChoice() {
    for (const id observer in observers_)
      [NSNotificationCenter.defaultCenter removeObserver:observer];
  }
  MenuChoice(const MenuChoice&) = delete;
  MenuChoice& operator=(const MenuChoice&) = delete;

  bool hasClosed() const { return *hasClosed_; }

 private:
  void observe(NSNotificationName name, void (^block)(NSNotification*)) {
    [observers_ addObject:[NSNotificationCenter.defaultCenter addObserverForName:name
                                                                          object:nil
                                                                           queue:nil
                                                                      usingBlock:block]];
  }

  // The menu has a loop of its own, in this mode.
  static void chooseSoon(NSMenu* menu, NSString* title) {
    CFRunLoopPerformBlock(CFRunLoopGetMain(), (__bridge CFStringRef)NSEventTrackingRunLoopMode, ^{
      const NSInteger index = [menu indexOfItemWithTitle:title];
      if (index < 0) ADD_FAILURE() << "no item " << toText(title);
      if (index >= 0) [menu performActionForItemAtIndex:index];
      [menu cancelTracking];
    });
    CFRunLoopWakeUp(CFRunLoopGetMain());
  }

  NSMutableArray* const observers_ = [NSMutableArray array];
  const std::shared_ptr<bool> hasClosed_ = std::make_shared<bool>();
};

// What an earlier test or run has stored.
void forgetDefaults() {
  const auto keys = CFOwner<CFArrayRef>::adopt(CFPreferencesCopyKeyList(
      kCFPreferencesCurrentApplication, kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
  for (NSString* key in (__bridge NSArray*)keys.get())
    [NSUserDefaults.standardUserDefaults removeObjectForKey:key];
}

class MacHost final : public Host {
 public:
  Platform& platform() override { return platform_; }
  bool letsUsAct() override { return platform_.accessibility().isProcessTrusted(); }

  bool until(const std::function<bool()>& holds) override {
    NSDate* const end = [NSDate dateWithTimeIntervalSinceNow:patience];
    while (!holds()) {
      if (end.timeIntervalSinceNow < 0) return false;
      @autoreleasepool {
        NSEvent* const event =
            [NSApp nextEventMatchingMask:NSEventMaskAny
                               untilDate:[NSDate dateWithTimeIntervalSinceNow:0.01]
                                  inMode:NSDefaultRunLoopMode
                                 dequeue:YES];
        if (event) [NSApp sendEvent:event];
      }
    }
    return true;
  }

  std::unique_ptr<Guest> launch(const std::string&) override {
    return std::make_unique<MacGuest>();
  }

  bool showsPanel(const std::string& name) override {
    NSWindow* const window = windowNamed(name);
    const NSPoint centre = NSMakePoint(NSMidX(window.frame), NSMidY(window.frame));
    // One that ignores the pointer is never there to it.
    return window.visible &&
           (window.ignoresMouseEvents || [NSWindow windowNumberAtPoint:centre
                                             belowWindowWithWindowNumber:0] == window.windowNumber);
  }

  void type(std::uint16_t keyCode, std::uint64_t modifierFlags) override {
    for (const bool isDown : {true, false}) {
      CGEventRef const event = CGEventCreateKeyboardEvent(nullptr, keyCode, isDown);
      CGEventSetFlags(event, modifierFlags);
      post(event);
    }
  }
  void hold(std::uint16_t keyCode) override {
    for (const bool isRepeat : {false, true, true}) {
      CGEventRef const press = CGEventCreateKeyboardEvent(nullptr, keyCode, true);
      CGEventSetIntegerValueField(press, kCGKeyboardEventAutorepeat, isRepeat);
      post(press);
    }
    post(CGEventCreateKeyboardEvent(nullptr, keyCode, false));
  }
  void movePointer(QuartzPoint to) override {
    pointer_ = CGPointMake(to.x, to.y);
    mouse(isPressed_ ? kCGEventLeftMouseDragged : kCGEventMouseMoved);
  }
  void pressButton() override {
    isPressed_ = true;
    mouse(kCGEventLeftMouseDown);
  }
  void releaseButton() override {
    isPressed_ = false;
    mouse(kCGEventLeftMouseUp);
  }

  // AppKit hears of an activation after the rest of the system; before, nobody could press a thing.
  void operate(const std::string& title) override {
    until([] { return NSApp.active == NSRunningApplication.currentApplication.active; });
    for (NSWindow* window in NSApp.windows) {
      if (!window.visible) continue;
      if (NSButton* const button = buttonIn(window.contentView, toNSString(title)))
        return [button performClick:nil];
    }
    throw std::out_of_range("no button " + title);
  }
  void closeWindow(const std::string& title) override { [windowNamed(title) performClose:nil]; }
  void pickColour(Colour colour) override {
    NSColorPanel.sharedColorPanel.color = toNSColor(colour);
  }

  void chooseFromStatusMenu(const std::string& title) override {
    const MenuChoice choice(toNSString(title));
    for (NSWindow* window in NSApp.windows)
      if (NSStatusBarButton* const button = statusButtonIn(window.contentView)) {
        [button performClick:nil];
        until([&] { return choice.hasClosed(); });
        return;
      }
    throw std::out_of_range("no status item");
  }
  void chooseFromContextMenu(QuartzPoint at, const std::string& title) override {
    const MenuChoice choice(toNSString(title));
    movePointer(at);
    mouse(kCGEventRightMouseDown);
    mouse(kCGEventRightMouseUp);
    until([&] { return choice.hasClosed(); });
  }

  void send(TerminationSignal signal) override {
    constexpr int numbers[] = {SIGTERM, SIGINT, SIGHUP};
    kill(getpid(), numbers[static_cast<int>(signal)]);
  }

 private:
  static NSWindow* windowNamed(const std::string& title) {
    for (NSWindow* window in NSApp.windows)
      if (window.visible && [window.title isEqualToString:toNSString(title)]) return window;
    return nil;
  }

  void mouse(CGEventType type) {
    const bool isSecondary = type == kCGEventRightMouseDown || type == kCGEventRightMouseUp;
    CGEventRef const event = CGEventCreateMouseEvent(
        nullptr, type, pointer_, isSecondary ? kCGMouseButtonRight : kCGMouseButtonLeft);
    CGEventSetFlags(event, CGEventFlags{});  // none that keys have left behind
    if (type != kCGEventMouseMoved) CGEventSetIntegerValueField(event, kCGMouseEventClickState, 1);
    post(event);
  }

  static void post(CGEventRef event) {
    CGEventPost(kCGHIDEventTap, event);
    CFRelease(event);
  }

  const Log log_{[](LogLevel, std::string_view message) { ADD_FAILURE() << message; }};
  MacPlatform platform_{log_};
  CGPoint pointer_ = CGPointZero;
  bool isPressed_ = false;
};

}  // namespace

std::unique_ptr<Host> Host::make() {
  [[maybe_unused]] static const bool isLaunched = [] {
    [NSApplication.sharedApplication setActivationPolicy:NSApplicationActivationPolicyAccessory];
    [NSApp finishLaunching];
    return true;
  }();
  forgetDefaults();
  return std::make_unique<MacHost>();
}

}  // namespace pellow::contract
