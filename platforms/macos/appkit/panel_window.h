#pragma once

#import <AppKit/AppKit.h>

#include "platform/panels.h"

// A borderless window that never takes the focus, stands on every Space and beside full-screen
// windows, and stays while other applications are active. Main thread.
@interface PellowPanelWindow : NSPanel

- (instancetype)initWithName:(NSString*)name shadow:(pellow::WindowShadow)shadow;

- (void)showAtLevel:(pellow::PanelLevel)level;

@end
