#pragma once

#import <AppKit/AppKit.h>

#include <optional>

#include "app/command_line.h"
#include "base/log.h"
#include "platform/ax_element.h"

// Builds the program once the application has started, and has it bring every window back before
// the application ends, by whatever normal road: the menu, the logout, an update; or builds what
// writes a report and puts no window away. The application holds its delegate only weakly.
@interface PellowApplicationDelegate : NSObject <NSApplicationDelegate>

// With a `report` this process writes that and nothing else. `predecessor` is the process whose
// place this one takes: the program begins when it has ended. The log outlives this object.
- (instancetype)initWithReport:(std::optional<pellow::ReportMode>)report
                   predecessor:(std::optional<pellow::ProcessID>)predecessor
                           log:(const pellow::Log*)log;

@end
