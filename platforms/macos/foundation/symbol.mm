#include "platforms/macos/foundation/symbol.h"

#include "platforms/macos/foundation/text.h"

namespace pellow {

NSImage* symbolImage(std::string_view name, NSImageSymbolConfiguration* configuration,
                     std::string_view accessibilityDescription) {
  NSString* const description =
      accessibilityDescription.empty() ? nil : toNSString(accessibilityDescription);
  NSImage* const symbol = [NSImage imageWithSystemSymbolName:toNSString(name)
                                    accessibilityDescription:description];
  if (!configuration) return symbol;
  return [symbol imageWithSymbolConfiguration:configuration];
}

}  // namespace pellow
