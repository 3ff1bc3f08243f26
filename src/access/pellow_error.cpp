#include "access/pellow_error.h"

#include <utility>

#include <fmt/format.h>

namespace pellow {

PellowError::PellowError(Code code, std::string errorDescription, std::optional<AXError> axError,
                         std::string applicationName)
    : code_(code),
      axError_(axError),
      applicationName_(std::move(applicationName)),
      errorDescription_(std::move(errorDescription)) {}

PellowError PellowError::minimizeFailed(AXError error) {
  return {Code::minimizeFailed,
          fmt::format("Could not minimize the window ({}).", explanation(error)), error};
}

PellowError PellowError::unminimizeFailed(AXError error) {
  return {Code::unminimizeFailed,
          fmt::format("Could not restore the window ({}).", explanation(error)), error};
}

PellowError PellowError::raiseFailed(AXError error) {
  return {Code::raiseFailed,
          fmt::format("Could not bring the window to the front ({}).", explanation(error)), error};
}

PellowError PellowError::moveFailed(AXError error) {
  return {Code::moveFailed, fmt::format("Could not move the window ({}).", explanation(error)),
          error};
}

PellowError PellowError::moveRefused(std::string applicationName) {
  auto sentence = applicationName + " will not let its window be moved off-screen.";
  return {Code::moveRefused, std::move(sentence), std::nullopt, std::move(applicationName)};
}

PellowError PellowError::accessibilityDenied() {
  return {Code::accessibilityDenied, "Pellow needs Accessibility permission to control windows."};
}

PellowError PellowError::windowGone() {
  return {Code::windowGone, "That window no longer exists."};
}

PellowError PellowError::hideFailed(const Texts& texts) {
  return {Code::hideFailed, std::string(texts.hideRefused)};
}

PellowError PellowError::noFocusedWindow() {
  return {Code::noFocusedWindow, "No focused window to pellow."};
}

PellowError PellowError::nothingPinned() {
  return {Code::nothingPinned,
          "No apps are pinned yet. Right-click a tab and choose \"Always Pellow <app> Here\" to "
          "pin one."};
}

PellowError PellowError::screenRecordingDenied(const Texts& texts) {
  return {Code::screenRecordingDenied, std::string(texts.screenRecordingDenied)};
}

PellowError PellowError::captureFailed() {
  return {Code::captureFailed, "Could not find that window to photograph it."};
}

std::string explanation(AXError error) {
  switch (error) {
    case AXError::success:
      return "success";
    case AXError::failure:
      return "AXError failure";
    case AXError::illegalArgument:
      return "illegal argument";
    case AXError::invalidUIElement:
      return "the window no longer exists";
    case AXError::invalidUIElementObserver:
      return "invalid observer";
    case AXError::cannotComplete:
      return "the app did not respond in time";
    case AXError::attributeUnsupported:
      return "the app does not support that attribute";
    case AXError::actionUnsupported:
      return "the app does not support that action";
    case AXError::notificationUnsupported:
      return "notification unsupported";
    case AXError::notImplemented:
      return "the app does not implement accessibility for this";
    case AXError::notificationAlreadyRegistered:
      return "notification already registered";
    case AXError::notificationNotRegistered:
      return "notification not registered";
    case AXError::apiDisabled:
      return "the Accessibility API is disabled";
    case AXError::noValue:
      return "no value";
    case AXError::parameterizedAttributeUnsupported:
      return "parameterized attribute unsupported";
    case AXError::notEnoughPrecision:
      return "not enough precision";
  }
  return fmt::format("AXError {}", std::to_underlying(error));
}

}  // namespace pellow
