#include "platforms/macos/foundation/text.h"

namespace pellow {
namespace {

NSString* decoded(std::string_view bytes, NSStringEncoding encoding) {
  return [[NSString alloc] initWithBytes:bytes.data() length:bytes.size() encoding:encoding];
}

}  // namespace

NSString* toNSString(std::string_view text) {
  if (text.empty()) return @"";
  if (NSString* const utf8 = decoded(text, NSUTF8StringEncoding)) return utf8;
  NSString* const latin = decoded(text, NSISOLatin1StringEncoding);
  return latin ? latin : @"";
}

CFOwner<CFStringRef> toCFString(std::string_view text) {
  return CFOwner<CFStringRef>::adopt(static_cast<CFStringRef>(CFBridgingRetain(toNSString(text))));
}

// Not UTF8String, which ends at the first NUL and is NULL for half a surrogate pair.
std::string toText(NSString* text) {
  NSData* const utf8 = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
  if (utf8.length == 0) return {};
  return {static_cast<const char*>(utf8.bytes), utf8.length};
}

}  // namespace pellow
