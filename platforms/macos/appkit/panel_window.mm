#include "platforms/macos/appkit/panel_window.h"

@implementation PellowPanelWindow

// A style mask that is set later does not reach the window server.
- (instancetype)initWithName:(NSString*)name shadow:(pellow::WindowShadow)shadow {
  self =
      [super initWithContentRect:NSMakeRect(0, 0, 1, 1)
                       styleMask:NSWindowStyleMaskBorderless | NSWindowStyleMaskNonactivatingPanel
                         backing:NSBackingStoreBuffered
                           defer:YES];
  if (!self) return nil;
  self.title = name;
  self.identifier = name;
  self.accessibilityIdentifier = name;
  self.releasedWhenClosed = NO;
  self.opaque = NO;
  self.backgroundColor = NSColor.clearColor;
  self.hasShadow = shadow == pellow::WindowShadow::yes;
  self.floatingPanel = YES;  // brings a level of its own
  [self showAtLevel:pellow::PanelLevel::statusWindow];
  self.becomesKeyOnlyIfNeeded = YES;
  self.worksWhenModal = YES;
  self.hidesOnDeactivate = NO;
  self.canHide = NO;
  self.movableByWindowBackground = NO;
  self.allowsToolTipsWhenApplicationIsInactive = YES;
  self.animationBehavior = NSWindowAnimationBehaviorUtilityWindow;
  self.collectionBehavior = NSWindowCollectionBehaviorCanJoinAllSpaces |
                            NSWindowCollectionBehaviorStationary |
                            NSWindowCollectionBehaviorFullScreenAuxiliary;
  return self;
}

- (void)showAtLevel:(pellow::PanelLevel)level {
  self.level = level == pellow::PanelLevel::statusWindow
                   ? NSStatusWindowLevel
                   : CGWindowLevelForKey(kCGDesktopIconWindowLevelKey) + 1;
}

- (BOOL)canBecomeKeyWindow {
  return NO;
}

- (BOOL)canBecomeMainWindow {
  return NO;
}

// Collapsed strips stand partly beside the display.
- (NSRect)constrainFrameRect:(NSRect)frame toScreen:(NSScreen*)__unused screen {
  return frame;
}

@end
