#pragma once

#import <AppKit/AppKit.h>

#include <optional>
#include <string>
#include <vector>

#include "base/log.h"
#include "platform/ax_element.h"

// Builds the program once the application has started, and has it bring every window back before
// the application ends, by whatever normal road: the menu, the logout, an update. The application
// holds its delegate only weakly.
@interface PellowApplicationDelegate : NSObject <NSApplicationDelegate>

// `predecessor` is the process whose place this one takes: the program begins when it has ended.
// The log outlives this object.
- (instancetype)initWithArguments:(std::vector<std::string>)arguments
                      predecessor:(std::optional<pellow::ProcessID>)predecessor
                              log:(const pellow::Log*)log;

@end
