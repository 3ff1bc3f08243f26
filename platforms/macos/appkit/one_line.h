#pragma once

#import <Foundation/Foundation.h>

#include <string_view>

namespace pellow {

// The text on one line: another application's title may hold line breaks. Any thread.
NSString* toOneLine(std::string_view text);

}  // namespace pellow
