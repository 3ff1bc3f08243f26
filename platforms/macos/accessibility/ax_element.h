#pragma once

#import <ApplicationServices/ApplicationServices.h>

#include <functional>
#include <mutex>

#include "platform/ax_element.h"
#include "platforms/macos/foundation/cf.h"

namespace pellow {

// An element as the Accessibility interface holds it. The timeout of a call is state of its
// reference, so calls on the same one take turns; the time spent waiting counts. Calls on elements
// of this process run on the main thread, without a timeout; it must not wait for whoever makes
// them.
class MacElement final : public AXElement::Object {
 public:
  // Gives the reference a timeout of its own at once: the default belongs to the whole process, and
  // a call on the system-wide element sets it.
  static AXElement wrap(CFOwner<AXUIElementRef> ref);

  // Every element of this platform is one of these.
  static const MacElement& of(const AXElement& element);

  explicit MacElement(CFOwner<AXUIElementRef> ref) : ref_(std::move(ref)) {}

  AXUIElementRef ref() const { return ref_.get(); }

  // Makes a call with this timeout. An element whose process has ended answers `invalidUIElement`,
  // whatever the system makes of it.
  AXError ask(Seconds timeout, const std::function<::AXError(AXUIElementRef)>& call) const;

  bool equals(const AXElement::Object& other) const override;
  std::expected<ProcessID, AXError> pid() const override;
  std::expected<AXValue, AXError> copyAttribute(std::string_view attribute,
                                                Seconds timeout) const override;
  std::vector<std::expected<AXValue, AXError>> copyMultipleAttributeValues(
      std::span<const std::string_view> attributes, Seconds timeout) const override;
  std::expected<void, AXError> setAttribute(std::string_view attribute, const AXValue& value,
                                            Seconds timeout) override;
  std::expected<void, AXError> performAction(std::string_view action, Seconds timeout) override;

 private:
  const CFOwner<AXUIElementRef> ref_;
  mutable std::timed_mutex turn_;
};

}  // namespace pellow
