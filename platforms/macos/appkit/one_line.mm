#include "platforms/macos/appkit/one_line.h"

#include "platforms/macos/foundation/text.h"

namespace pellow {

NSString* toOneLine(std::string_view text) {
  NSString* const whole = toNSString(text);
  NSCharacterSet* const breaks = NSCharacterSet.newlineCharacterSet;
  if ([whole rangeOfCharacterFromSet:breaks].location == NSNotFound) return whole;
  return [[whole componentsSeparatedByCharactersInSet:breaks] componentsJoinedByString:@" "];
}

}  // namespace pellow
