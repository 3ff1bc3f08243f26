#pragma once

#import <Foundation/Foundation.h>

#include "platform/system_error.h"

namespace pellow {

// The system's own sentence; one that says so when there is none, as for nil. Any thread.
SystemError toSystemError(NSError* error);

}  // namespace pellow
