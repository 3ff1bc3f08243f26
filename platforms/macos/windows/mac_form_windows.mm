#include "platforms/macos/windows/mac_form_windows.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "platforms/macos/foundation/foreground.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"
#include "platforms/macos/windows/form_pane.h"
#include "platforms/macos/windows/main_menu.h"

namespace {

// Text that is being typed is told to its field.
void endEditing(NSWindow* window) {
  if ([window.firstResponder isKindOfClass:NSText.class]) [window makeFirstResponder:nil];
}

}  // namespace

@interface PellowFormWindowDelegate : NSObject <NSWindowDelegate, NSTabViewDelegate> {
 @public
  std::function<void()> onClosed;
  std::function<void()> onMiniaturized;
}
@end

@implementation PellowFormWindowDelegate

// Hidden in place of closed, so that it is out of sight when its owner is told.
- (BOOL)windowShouldClose:(NSWindow*)sender {
  pellow::runInPool([&] {
    endEditing(sender);
    [sender orderOut:nil];
    if (const auto told = onClosed) told();
  });
  return NO;
}

- (void)windowDidMiniaturize:(NSNotification*)notification {
  if (onMiniaturized) onMiniaturized();
}

- (void)tabView:(NSTabView*)tabView willSelectTabViewItem:(NSTabViewItem*)item {
  endEditing(tabView.window);
}

@end

namespace pellow {
namespace {

constexpr CGFloat margin = 12;        // points around the tabs
constexpr CGFloat tallest = 660;      // points, at first
constexpr CGFloat lowest = 240;       // points; below that a pane is no use
constexpr CGFloat screenShare = 0.9;  // of the free height, at most

NSWindow* makeNSWindow(NSString* name, NSString* title, NSTabView* tabs) {
  NSWindow* const window = [[NSWindow alloc]
      initWithContentRect:NSMakeRect(0, 0, 500, 400)
                styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                          NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable
                  backing:NSBackingStoreBuffered
                    defer:YES];
  window.title = title;
  window.identifier = name;
  window.releasedWhenClosed = NO;
  window.tabbingMode = NSWindowTabbingModeDisallowed;
  window.collectionBehavior =
      NSWindowCollectionBehaviorMoveToActiveSpace | NSWindowCollectionBehaviorFullScreenAuxiliary;
  window.autorecalculatesKeyViewLoop = YES;
  window.acceptsMouseMovedEvents = YES;  // for the local monitors
  tabs.frame = NSInsetRect(window.contentView.bounds, margin, margin);
  tabs.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
  [window.contentView addSubview:tabs];
  return window;
}

class MacFormWindow final : public FormWindow {
 public:
  MacFormWindow(std::shared_ptr<Foreground> foreground, NSString* name, NSString* title);
  ~MacFormWindow() override;

  void setForm(Form form) override;
  void present() override;
  bool isVisible() const override { return window_.visible; }

 private:
  void showPane(const FormPane& pane, std::size_t index);
  NSSize wantedSize() const;
  void chooseSize();
  void fitWidth();
  void closed();

  std::shared_ptr<Foreground> foreground_;
  NSTabView* tabs_;
  NSWindow* window_;
  NSLayoutConstraint* narrowest_;
  PellowFormWindowDelegate* delegate_;
  std::vector<std::unique_ptr<FormPaneView>> panes_;
  bool hasSize_ = false;
};

MacFormWindow::MacFormWindow(std::shared_ptr<Foreground> foreground, NSString* name,
                             NSString* title)
    : foreground_(std::move(foreground)),
      tabs_([[NSTabView alloc] initWithFrame:NSZeroRect]),
      window_(makeNSWindow(name, title, tabs_)),
      narrowest_([window_.contentView.widthAnchor constraintGreaterThanOrEqualToConstant:0]),
      delegate_([[PellowFormWindowDelegate alloc] init]) {
  delegate_->onClosed = [this] { closed(); };
  delegate_->onMiniaturized = [this] { foreground_->giveBackLater(); };
  // A window with constraints has no minimal size but theirs.
  narrowest_.active = YES;
  [window_.contentView.heightAnchor constraintGreaterThanOrEqualToConstant:lowest].active = YES;
  window_.delegate = delegate_;
  tabs_.delegate = delegate_;
}

MacFormWindow::~MacFormWindow() {
  delegate_->onClosed = nullptr;
  delegate_->onMiniaturized = nullptr;
  if (isVisible()) foreground_->giveBackLater();
  [window_ orderOut:nil];
  keepUntilIdle(window_);
  keepUntilIdle(delegate_);
}

void MacFormWindow::setForm(Form form) {
  while (panes_.size() > form.panes.size()) {
    [tabs_ removeTabViewItem:[tabs_ tabViewItemAtIndex:tabs_.numberOfTabViewItems - 1]];
    panes_.pop_back();
  }
  for (std::size_t index = 0; index < form.panes.size(); ++index)
    showPane(form.panes[index], index);
  fitWidth();
}

void MacFormWindow::showPane(const FormPane& pane, std::size_t index) {
  NSString* const label = toNSString(pane.label);
  if (index == panes_.size()) {
    panes_.push_back(std::make_unique<FormPaneView>());
    NSTabViewItem* const item = [[NSTabViewItem alloc] initWithIdentifier:nil];
    item.label = label;
    item.view = panes_.back()->view();
    [tabs_ addTabViewItem:item];
  }
  NSTabViewItem* const item = [tabs_ tabViewItemAtIndex:static_cast<NSInteger>(index)];
  if (![item.label isEqualToString:label]) item.label = label;
  panes_[index]->showElements(pane.elements);
}

void MacFormWindow::present() {
  if (!std::exchange(hasSize_, true)) chooseSize();
  if (window_.miniaturized) [window_ deminiaturize:nil];
  foreground_->take(window_);
}

// Of the window's content.
NSSize MacFormWindow::wantedSize() const {
  NSSize wanted = NSZeroSize;
  for (const auto& pane : panes_) {
    const NSSize size = pane->fittingSize();
    wanted.width = std::max(wanted.width, size.width);
    wanted.height = std::max(wanted.height, size.height);
  }
  // Measured at the tabs alone, which need not have followed the window yet.
  const NSSize whole = tabs_.frame.size;
  const NSSize page = tabs_.contentRect.size;
  const CGFloat width = std::max(wanted.width, tabs_.minimumSize.width);
  return NSMakeSize(width + whole.width - page.width + 2 * margin,
                    wanted.height + whole.height - page.height + 2 * margin);
}

void MacFormWindow::chooseSize() {
  const NSSize wanted = wantedSize();
  const CGFloat free = NSScreen.mainScreen.visibleFrame.size.height * screenShare;
  const CGFloat height = std::max(lowest, std::min({wanted.height, tallest, free}));
  [window_ setContentSize:NSMakeSize(wanted.width, height)];
  [window_ center];
  fitWidth();
}

void MacFormWindow::fitWidth() {
  if (!hasSize_) return;
  const CGFloat width = wantedSize().width;
  narrowest_.constant = width;
  const NSSize now = window_.contentView.bounds.size;
  if (now.width < width) [window_ setContentSize:NSMakeSize(width, now.height)];
}

void MacFormWindow::closed() {
  foreground_->giveBackLater();
  report(onClosed);
}

}  // namespace

MacFormWindows::MacFormWindows(std::shared_ptr<Foreground> foreground)
    : foreground_(std::move(foreground)) {
  installMainMenu();
}

std::unique_ptr<FormWindow> MacFormWindows::makeWindow(std::string name, std::string title) {
  return std::make_unique<MacFormWindow>(foreground_, toNSString(name), toNSString(title));
}

}  // namespace pellow
