#pragma once

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

#include "base/geometry.h"

// The system has one type of rectangle for all its spaces; here its name tells which one is meant:
// NSRect is AppKit's (or a view's, y up), CGRect is Quartz's.

namespace pellow {

inline NSPoint toNSPoint(AppKitPoint point) { return NSMakePoint(point.x, point.y); }
inline NSPoint toNSPoint(ViewPoint point) { return NSMakePoint(point.x, point.y); }
inline CGPoint toCGPoint(QuartzPoint point) { return CGPointMake(point.x, point.y); }
inline AppKitPoint toAppKitPoint(NSPoint point) { return {point.x, point.y}; }
inline ViewPoint toViewPoint(NSPoint point) { return {point.x, point.y}; }
inline QuartzPoint toQuartzPoint(CGPoint point) { return {point.x, point.y}; }

inline NSSize toNSSize(Size size) { return NSMakeSize(size.width, size.height); }
inline CGSize toCGSize(Size size) { return CGSizeMake(size.width, size.height); }
inline Size toSize(CGSize size) { return {size.width, size.height}; }

inline NSRect toNSRect(const AppKitRect& rect) {
  return NSMakeRect(rect.minX(), rect.minY(), rect.width(), rect.height());
}
inline NSRect toNSRect(const ViewRect& rect) {
  return NSMakeRect(rect.minX(), rect.minY(), rect.width(), rect.height());
}
inline CGRect toCGRect(const QuartzRect& rect) {
  return CGRectMake(rect.minX(), rect.minY(), rect.width(), rect.height());
}
inline AppKitRect toAppKitRect(NSRect rect) {
  return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}
inline ViewRect toViewRect(NSRect rect) {
  return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}
inline QuartzRect toQuartzRect(CGRect rect) {
  return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

}  // namespace pellow
