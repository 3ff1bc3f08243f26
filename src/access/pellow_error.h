#pragma once

#include <exception>
#include <optional>
#include <string>

#include "base/texts.h"
#include "platform/ax_error.h"

namespace pellow {

// Why a window could not be controlled, in a sentence for the user.
class PellowError : public std::exception {
 public:
  enum class Code {
    minimizeFailed,    // with the Accessibility error
    unminimizeFailed,  // with the Accessibility error
    raiseFailed,       // with the Accessibility error
    moveFailed,        // with the Accessibility error
    moveRefused,       // with the application's name
    accessibilityDenied,
    windowGone,
    hideFailed,
    noFocusedWindow,
    nothingPinned,
    screenRecordingDenied,
    captureFailed,
  };

  static PellowError minimizeFailed(AXError error);
  static PellowError unminimizeFailed(AXError error);
  static PellowError raiseFailed(AXError error);
  static PellowError moveFailed(AXError error);
  static PellowError moveRefused(std::string applicationName);
  static PellowError accessibilityDenied();
  static PellowError windowGone();
  static PellowError hideFailed(const Texts& texts);
  static PellowError noFocusedWindow();
  static PellowError nothingPinned();
  static PellowError screenRecordingDenied(const Texts& texts);
  static PellowError captureFailed();

  Code code() const { return code_; }
  std::optional<AXError> axError() const { return axError_; }
  // The window no longer exists.
  bool isWindowGone() const {
    return code_ == Code::windowGone || axError_ == AXError::invalidUIElement;
  }
  const std::string& applicationName() const { return applicationName_; }  // empty without one

  // The sentence for the user.
  const std::string& errorDescription() const { return errorDescription_; }
  const char* what() const noexcept override { return errorDescription_.c_str(); }

  // The same case with the same payload.
  friend bool operator==(const PellowError& a, const PellowError& b) {
    return a.code_ == b.code_ && a.axError_ == b.axError_ &&
           a.applicationName_ == b.applicationName_;
  }

 private:
  PellowError(Code code, std::string errorDescription, std::optional<AXError> axError = {},
              std::string applicationName = {});

  Code code_;
  std::optional<AXError> axError_;
  std::string applicationName_;
  std::string errorDescription_;
};

// What an Accessibility error means, to stand within a sentence: "no value".
std::string explanation(AXError error);

}  // namespace pellow
