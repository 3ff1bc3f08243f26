#pragma once

#include <expected>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "base/geometry.h"
#include "platform/ax_error.h"
#include "platform/clock.h"

namespace pellow {

using ProcessID = int;

class AXElement;

// What an attribute holds.
using AXValue =
    std::variant<bool, std::string, QuartzPoint, Size, AXElement, std::vector<AXElement>>;

// An Accessibility element of another process: an application, a window, a button. A value that
// shares the platform's object; two elements are equal when they stand for the same thing on the
// screen, however they were obtained. Members may be called on any thread, on several at once; one
// with a timeout blocks until the other application answers or the time is up (`cannotComplete`).
// For an element of this process the main thread answers: it must not wait for the caller.
// Once its thing is gone, an element answers `invalidUIElement` for ever.
class AXElement {
 public:
  class Object;

  explicit AXElement(std::shared_ptr<Object> object) : object_(std::move(object)) {}

  bool operator==(const AXElement& other) const;

  // The process that owns the element; known without asking it.
  std::expected<ProcessID, AXError> pid() const;

  // Points and sizes are in Quartz space.
  std::expected<AXValue, AXError> copyAttribute(std::string_view attribute, Seconds timeout) const;
  // Several in one call, an answer for each; `timeout` bounds the whole call.
  std::vector<std::expected<AXValue, AXError>> copyMultipleAttributeValues(
      std::span<const std::string_view> attributes, Seconds timeout) const;
  std::expected<void, AXError> setAttribute(std::string_view attribute, const AXValue& value,
                                            Seconds timeout) const;
  std::expected<void, AXError> performAction(std::string_view action, Seconds timeout) const;

  const Object& object() const { return *object_; }

 private:
  std::shared_ptr<Object> object_;  // never empty
};

// The base of a platform's elements; the members mean the same as above.
class AXElement::Object {
 public:
  virtual ~Object() = default;

  virtual bool equals(const Object& other) const = 0;
  virtual std::expected<ProcessID, AXError> pid() const = 0;
  virtual std::expected<AXValue, AXError> copyAttribute(std::string_view attribute,
                                                        Seconds timeout) const = 0;
  virtual std::vector<std::expected<AXValue, AXError>> copyMultipleAttributeValues(
      std::span<const std::string_view> attributes, Seconds timeout) const = 0;
  virtual std::expected<void, AXError> setAttribute(std::string_view attribute,
                                                    const AXValue& value, Seconds timeout) = 0;
  virtual std::expected<void, AXError> performAction(std::string_view action, Seconds timeout) = 0;
};

inline bool AXElement::operator==(const AXElement& other) const {
  return object_ == other.object_ || object_->equals(*other.object_);
}
inline std::expected<ProcessID, AXError> AXElement::pid() const { return object_->pid(); }
inline std::expected<AXValue, AXError> AXElement::copyAttribute(std::string_view attribute,
                                                                Seconds timeout) const {
  return object_->copyAttribute(attribute, timeout);
}
inline std::vector<std::expected<AXValue, AXError>> AXElement::copyMultipleAttributeValues(
    std::span<const std::string_view> attributes, Seconds timeout) const {
  return object_->copyMultipleAttributeValues(attributes, timeout);
}
inline std::expected<void, AXError> AXElement::setAttribute(std::string_view attribute,
                                                            const AXValue& value,
                                                            Seconds timeout) const {
  return object_->setAttribute(attribute, value, timeout);
}
inline std::expected<void, AXError> AXElement::performAction(std::string_view action,
                                                             Seconds timeout) const {
  return object_->performAction(action, timeout);
}

}  // namespace pellow
