#include "platforms/macos/accessibility/ax_element.h"

#import <dispatch/dispatch.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>

#include "platforms/macos/accessibility/ax_value.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"

namespace pellow {
namespace {

using Answer = std::expected<AXValue, AXError>;
using Wait = std::chrono::duration<Seconds>;

constexpr float ordinaryTimeout = 6;
// 0 would mean the timeout of the whole process.
constexpr Seconds shortestTimeout = 0.001;

bool hasEnded(ProcessID pid) { return pid > 0 && kill(pid, 0) != 0 && errno == ESRCH; }

void runOnMain(const std::function<void()>& work) {
  if (NSThread.isMainThread) return work();
  dispatch_sync(dispatch_get_main_queue(), ^{
    runInPool(work);
  });
}

std::expected<void, AXError> outcome(AXError error) {
  if (error != AXError::success) return std::unexpected(error);
  return {};
}

CFOwner<CFArrayRef> toCFArray(std::span<const std::string_view> names) {
  auto array = CFOwner<CFMutableArrayRef>::adopt(
      CFArrayCreateMutable(nullptr, static_cast<CFIndex>(names.size()), &kCFTypeArrayCallBacks));
  for (const auto name : names) CFArrayAppendValue(array.get(), toCFString(name).get());
  return CFOwner<CFArrayRef>::retain(array.get());
}

}  // namespace

AXElement MacElement::wrap(CFOwner<AXUIElementRef> ref) {
  AXUIElementSetMessagingTimeout(ref.get(), ordinaryTimeout);
  return AXElement(std::make_shared<MacElement>(std::move(ref)));
}

const MacElement& MacElement::of(const AXElement& element) {
  return static_cast<const MacElement&>(element.object());
}

AXError MacElement::ask(Seconds timeout,
                        const std::function<::AXError(AXUIElementRef)>& call) const {
  using std::chrono::steady_clock;
  const auto asked = steady_clock::now();
  const std::unique_lock turn(turn_, Wait(timeout));
  if (!turn) return AXError::cannotComplete;
  const auto left = timeout - Wait(steady_clock::now() - asked).count();
  AXUIElementSetMessagingTimeout(ref(), static_cast<float>(std::max(left, shortestTimeout)));
  const auto owner = pid();
  auto error = AXError::failure;
  const auto answer = [&] { error = AXError{call(ref())}; };
  // AppKit answers questions about its own process in the thread that asks, but its windows are the
  // main thread's.
  if (owner == getpid()) {
    runOnMain(answer);
  } else {
    answer();
  }
  if (error == AXError::success) return error;
  return owner && hasEnded(*owner) ? AXError::invalidUIElement : error;
}

bool MacElement::equals(const AXElement::Object& other) const {
  return CFEqual(ref(), static_cast<const MacElement&>(other).ref());
}

std::expected<ProcessID, AXError> MacElement::pid() const {
  pid_t pid = 0;
  const auto error = AXError{AXUIElementGetPid(ref(), &pid)};
  if (error != AXError::success) return std::unexpected(error);
  return pid;
}

Answer MacElement::copyAttribute(std::string_view attribute, Seconds timeout) const {
  const auto name = toCFString(attribute);
  CFTypeRef value = nullptr;
  const auto error = ask(timeout, [&](AXUIElementRef element) {
    return AXUIElementCopyAttributeValue(element, name.get(), &value);
  });
  const auto owned = CFOwner<CFTypeRef>::adopt(value);
  if (error != AXError::success) return std::unexpected(error);
  return toAXValue(owned.get());
}

std::vector<Answer> MacElement::copyMultipleAttributeValues(
    std::span<const std::string_view> attributes, Seconds timeout) const {
  const auto names = toCFArray(attributes);
  CFArrayRef values = nullptr;
  const auto error = ask(timeout, [&](AXUIElementRef element) {
    return AXUIElementCopyMultipleAttributeValues(element, names.get(),
                                                  AXCopyMultipleAttributeOptions{}, &values);
  });
  const auto owned = CFOwner<CFArrayRef>::adopt(values);
  if (error != AXError::success)
    return std::vector<Answer>(attributes.size(), std::unexpected(error));
  const auto count = owned ? CFArrayGetCount(owned.get()) : 0;
  std::vector<Answer> answers;
  for (CFIndex i = 0; i < static_cast<CFIndex>(attributes.size()); ++i)
    answers.push_back(toAXValue(i < count ? CFArrayGetValueAtIndex(owned.get(), i) : nullptr));
  return answers;
}

std::expected<void, AXError> MacElement::setAttribute(std::string_view attribute,
                                                      const AXValue& value, Seconds timeout) {
  const auto name = toCFString(attribute);
  const auto written = toCFValue(value);
  if (!written) return std::unexpected(AXError::illegalArgument);
  return outcome(ask(timeout, [&](AXUIElementRef element) {
    return AXUIElementSetAttributeValue(element, name.get(), written.get());
  }));
}

std::expected<void, AXError> MacElement::performAction(std::string_view action, Seconds timeout) {
  const auto name = toCFString(action);
  return outcome(ask(timeout, [&](AXUIElementRef element) {
    return AXUIElementPerformAction(element, name.get());
  }));
}

}  // namespace pellow
