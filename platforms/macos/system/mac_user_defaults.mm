#include "platforms/macos/system/mac_user_defaults.h"

#import <Foundation/Foundation.h>

#include "platforms/macos/foundation/text.h"

namespace pellow {
namespace {

struct ToObject {
  id operator()(bool truth) const { return truth ? @YES : @NO; }
  id operator()(double number) const { return [NSNumber numberWithDouble:number]; }
  id operator()(const std::string& text) const { return toNSString(text); }
  id operator()(const DefaultsData& data) const {
    return [NSData dataWithBytes:data.bytes.data() length:data.bytes.size()];
  }
};

id toObject(const DefaultsValue& value) { return std::visit(ToObject{}, value); }

// A truth and a number are both an NSNumber.
DefaultsValue toValue(NSNumber* number) {
  if (CFGetTypeID((__bridge CFTypeRef)number) == CFBooleanGetTypeID())
    return number.boolValue != NO;
  return number.doubleValue;
}

DefaultsValue toValue(NSData* data) {
  if (data.length == 0) return DefaultsData{};
  return DefaultsData{{static_cast<const char*>(data.bytes), data.length}};
}

}  // namespace

std::optional<DefaultsValue> MacUserDefaults::value(std::string_view key) const {
  id const stored = [NSUserDefaults.standardUserDefaults objectForKey:toNSString(key)];
  if ([stored isKindOfClass:NSNumber.class]) return toValue(static_cast<NSNumber*>(stored));
  if ([stored isKindOfClass:NSString.class]) return toText(stored);
  if ([stored isKindOfClass:NSData.class]) return toValue(static_cast<NSData*>(stored));
  return std::nullopt;
}

std::expected<void, SystemError> MacUserDefaults::set(std::string_view key, DefaultsValue value,
                                                      Kept kept) {
  [NSUserDefaults.standardUserDefaults setObject:toObject(value) forKey:toNSString(key)];
  if (kept == Kept::eventually) return {};
  if (CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication)) return {};
  return std::unexpected(SystemError{"The system could not write the user defaults."});
}

void MacUserDefaults::registerDefaults(std::map<std::string, DefaultsValue> values) {
  NSMutableDictionary<NSString*, id>* const registered = [NSMutableDictionary dictionary];
  for (const auto& [key, value] : values) registered[toNSString(key)] = toObject(value);
  [NSUserDefaults.standardUserDefaults registerDefaults:registered];
}

}  // namespace pellow
