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
// screen, however they were obtained. Every member may be called on any thread and blocks until
// the other application answers or the messaging timeout has passed (`cannotComplete`); an element
// whose thing is gone answers `invalidUIElement` for ever.
class AXElement {
 public:
  class Object;

  explicit AXElement(std::shared_ptr<Object> object) : object_(std::move(object)) {}

  bool operator==(const AXElement& other) const;

  // The process that owns the element.
  std::expected<ProcessID, AXError> pid() const;

  // How long a call on this element may take; shared by all copies of it.
  void setMessagingTimeout(Seconds timeout) const;

  // Points and sizes are in Quartz space.
  std::expected<AXValue, AXError> copyAttribute(std::string_view attribute) const;
  // Several in one call, which the messaging timeout bounds as a whole; an answer for each.
  std::vector<std::expected<AXValue, AXError>> copyMultipleAttributeValues(
      std::span<const std::string_view> attributes) const;
  std::expected<void, AXError> setAttribute(std::string_view attribute, const AXValue& value) const;
  std::expected<void, AXError> performAction(std::string_view action) const;

  const Object& object() const { return *object_; }

 private:
  std::shared_ptr<Object> object_;  // never empty
};

// What a platform derives its elements from; the members mean what they mean above.
class AXElement::Object {
 public:
  virtual ~Object() = default;

  virtual bool equals(const Object& other) const = 0;
  virtual std::expected<ProcessID, AXError> pid() const = 0;
  virtual void setMessagingTimeout(Seconds timeout) = 0;
  virtual std::expected<AXValue, AXError> copyAttribute(std::string_view attribute) const = 0;
  virtual std::vector<std::expected<AXValue, AXError>> copyMultipleAttributeValues(
      std::span<const std::string_view> attributes) const = 0;
  virtual std::expected<void, AXError> setAttribute(std::string_view attribute,
                                                    const AXValue& value) = 0;
  virtual std::expected<void, AXError> performAction(std::string_view action) = 0;
};

inline bool AXElement::operator==(const AXElement& other) const {
  return object_ == other.object_ || object_->equals(*other.object_);
}
inline std::expected<ProcessID, AXError> AXElement::pid() const { return object_->pid(); }
inline void AXElement::setMessagingTimeout(Seconds timeout) const {
  object_->setMessagingTimeout(timeout);
}
inline std::expected<AXValue, AXError> AXElement::copyAttribute(std::string_view attribute) const {
  return object_->copyAttribute(attribute);
}
inline std::vector<std::expected<AXValue, AXError>> AXElement::copyMultipleAttributeValues(
    std::span<const std::string_view> attributes) const {
  return object_->copyMultipleAttributeValues(attributes);
}
inline std::expected<void, AXError> AXElement::setAttribute(std::string_view attribute,
                                                            const AXValue& value) const {
  return object_->setAttribute(attribute, value);
}
inline std::expected<void, AXError> AXElement::performAction(std::string_view action) const {
  return object_->performAction(action);
}

}  // namespace pellow
