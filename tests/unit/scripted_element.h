#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/accessibility.h"

namespace pellow {

// An Accessibility element that answers exactly what a test tells it to, even nonsense.
class ScriptedElement final : public AXElement::Object {
 public:
  using Answer = std::expected<AXValue, AXError>;

  int thing = 0;  // what it stands for; elements of one thing are equal
  std::expected<ProcessID, AXError> owner = 1;
  std::map<std::string, std::function<Answer()>, std::less<>> attributes;
  std::expected<void, AXError> writeAnswer;
  std::vector<std::pair<std::string, AXValue>> writes;
  mutable Seconds lastTimeout = 0;

  void answer(std::string attribute, Answer answer) {
    attributes[std::move(attribute)] = [answer] { return answer; };
  }

  bool equals(const Object& other) const override {
    return thing == dynamic_cast<const ScriptedElement&>(other).thing;
  }
  std::expected<ProcessID, AXError> pid() const override { return owner; }
  std::expected<AXValue, AXError> copyAttribute(std::string_view attribute,
                                                Seconds timeout) const override {
    lastTimeout = timeout;
    const auto found = attributes.find(attribute);
    if (found == attributes.end()) return std::unexpected(AXError::attributeUnsupported);
    return found->second();
  }
  std::vector<Answer> copyMultipleAttributeValues(std::span<const std::string_view> names,
                                                  Seconds timeout) const override {
    std::vector<Answer> answers;
    for (const auto name : names) answers.push_back(copyAttribute(name, timeout));
    return answers;
  }
  std::expected<void, AXError> setAttribute(std::string_view attribute, const AXValue& value,
                                            Seconds timeout) override {
    lastTimeout = timeout;
    writes.emplace_back(attribute, value);
    return writeAnswer;
  }
  std::expected<void, AXError> performAction(std::string_view, Seconds) override { return {}; }
};

inline std::shared_ptr<ScriptedElement> scriptedElement(int thing) {
  auto element = std::make_shared<ScriptedElement>();
  element->thing = thing;
  return element;
}

// The same application for every process.
class ScriptedAccessibility final : public Accessibility {
 public:
  std::shared_ptr<ScriptedElement> system = scriptedElement(-1);
  std::shared_ptr<ScriptedElement> onlyApplication = scriptedElement(-2);

  bool isProcessTrusted() const override { return true; }
  bool isProcessTrustedWithPrompt() override { return true; }
  AXElement systemWide() override { return AXElement(system); }
  AXElement application(ProcessID) override { return AXElement(onlyApplication); }
  std::expected<AXElement, AXError> elementAtPosition(const AXElement&, QuartzPoint,
                                                      Seconds) override {
    return std::unexpected(AXError::noValue);
  }
  std::expected<Subscription, AXError> observe(const AXElement&, std::string_view,
                                               std::function<void(const AXElement&)>,
                                               Seconds) override {
    return std::unexpected(AXError::notificationUnsupported);
  }
};

}  // namespace pellow
