#pragma once

namespace pellow {

// The error numbers of the Accessibility interface. A platform may pass on numbers that have no
// name here.
enum class AXError : int {
  success = 0,
  failure = -25200,
  illegalArgument = -25201,
  invalidUIElement = -25202,
  invalidUIElementObserver = -25203,
  cannotComplete = -25204,
  attributeUnsupported = -25205,
  actionUnsupported = -25206,
  notificationUnsupported = -25207,
  notImplemented = -25208,
  notificationAlreadyRegistered = -25209,
  notificationNotRegistered = -25210,
  apiDisabled = -25211,
  noValue = -25212,
  parameterizedAttributeUnsupported = -25213,
  notEnoughPrecision = -25214,
};

}  // namespace pellow
