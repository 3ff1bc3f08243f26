#include "platforms/macos/system/mac_symbolic_hot_keys.h"

#import <Foundation/Foundation.h>

#include "platforms/macos/foundation/cf.h"
#include "platforms/macos/foundation/text.h"

namespace pellow {
namespace {

template <class Kind>
Kind* as(id object) {
  return [object isKindOfClass:[Kind class]] ? object : nil;
}

std::vector<std::int64_t> wholeNumbers(NSArray* stored) {
  std::vector<std::int64_t> numbers;
  for (id each in stored) {
    NSNumber* const number = as<NSNumber>(each);
    if (!number || number.doubleValue != static_cast<double>(number.longLongValue)) return {};
    numbers.push_back(number.longLongValue);
  }
  return numbers;
}

SymbolicHotKey hotKey(NSString* identifier, NSDictionary* stored) {
  NSDictionary* const value = as<NSDictionary>(stored[@"value"]);
  return {.identifier = toText(identifier),
          .enabled = as<NSNumber>(stored[@"enabled"]).boolValue != NO,
          .parameters = wholeNumbers(as<NSArray>(value[@"parameters"]))};
}

}  // namespace

// Synchronizing first, as System Settings may have changed them a moment ago.
std::vector<SymbolicHotKey> MacSymbolicHotKeys::all() const {
  const auto domain = CFSTR("com.apple.symbolichotkeys");
  CFPreferencesAppSynchronize(domain);
  const auto owned = CFOwner<CFPropertyListRef>::adopt(
      CFPreferencesCopyAppValue(CFSTR("AppleSymbolicHotKeys"), domain));
  NSDictionary* const stored = as<NSDictionary>((__bridge id)owned.get());
  std::vector<SymbolicHotKey> all;
  for (id identifier in stored) {
    NSDictionary* const entry = as<NSDictionary>(stored[identifier]);
    if (entry) all.push_back(hotKey(identifier, entry));
  }
  return all;
}

}  // namespace pellow
