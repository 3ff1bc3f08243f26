#include "platforms/macos/accessibility/ax_observer.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/ax_names.h"
#include "platforms/macos/accessibility/ax_element.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"

namespace pellow {
namespace {

// A subscription that goes on as long as this object. The system gets its number and no pointer:
// a call that was already on its way when it ended finds nothing.
class Observation : public std::enable_shared_from_this<Observation> {
 public:
  Observation(AXElement element, std::function<void(const AXElement&)> handler, bool isOnce)
      : element_(std::move(element)), handler_(std::move(handler)), isOnce_(isOnce) {}
  Observation(const Observation&) = delete;
  Observation& operator=(const Observation&) = delete;
  ~Observation();

  AXError begin(std::string_view notification, Seconds timeout);

  // Hands the element to the handler, on the main queue.
  void post(AXElement poster);

 private:
  // Those that go on, by number. Observers take a bare C function, so it cannot belong to anybody.
  struct Register {
    std::mutex mutex;
    std::map<std::uintptr_t, std::weak_ptr<Observation>> byNumber;
    std::uintptr_t last = 0;
  };
  static Register& everyone() {
    static auto* const all = new Register;  // outlives every call of the system
    return *all;
  }
  static void notified(AXObserverRef observer, AXUIElementRef element, CFStringRef notification,
                       void* number);

  void enter();
  void watchEndOf(ProcessID pid);
  void tell(const AXElement& poster);

  const AXElement element_;
  const std::function<void(const AXElement&)> handler_;
  const bool isOnce_;
  bool isTold_ = false;
  std::uintptr_t number_ = 0;
  CFOwner<AXObserverRef> observer_;
  dispatch_source_t processEnd_ = nil;
};

// Without AXObserverRemoveNotification, which would wait for an application that hangs; releasing
// the observer is enough.
Observation::~Observation() {
  if (processEnd_) dispatch_source_cancel(processEnd_);
  if (observer_)
    CFRunLoopRemoveSource(CFRunLoopGetMain(), AXObserverGetRunLoopSource(observer_.get()),
                          kCFRunLoopDefaultMode);
  auto& all = everyone();
  const std::lock_guard lock(all.mutex);
  all.byNumber.erase(number_);
}

void Observation::enter() {
  auto& all = everyone();
  const std::lock_guard lock(all.mutex);
  number_ = ++all.last;
  all.byNumber.emplace(number_, weak_from_this());
}

AXError Observation::begin(std::string_view notification, Seconds timeout) {
  enter();
  const auto pid = element_.pid();
  if (!pid) return pid.error();
  const auto name = toCFString(notification);
  AXObserverRef observer = nullptr;
  const auto added = MacElement::of(element_).ask(timeout, [&](AXUIElementRef element) {
    const auto made = AXObserverCreate(*pid, notified, &observer);
    if (made != kAXErrorSuccess) return made;
    return AXObserverAddNotification(observer, element, name.get(),
                                     reinterpret_cast<void*>(number_));
  });
  observer_ = CFOwner<AXObserverRef>::adopt(observer);
  if (added != AXError::success) return added;
  CFRunLoopAddSource(CFRunLoopGetMain(), AXObserverGetRunLoopSource(observer),
                     kCFRunLoopDefaultMode);
  if (isOnce_) watchEndOf(*pid);
  return AXError::success;
}

// An application that ends posts nothing for its windows.
void Observation::watchEndOf(ProcessID pid) {
  processEnd_ = dispatch_source_create(DISPATCH_SOURCE_TYPE_PROC, static_cast<uintptr_t>(pid),
                                       DISPATCH_PROC_EXIT, dispatch_get_main_queue());
  if (!processEnd_) return;
  const std::weak_ptr weak = weak_from_this();
  dispatch_source_set_event_handler(processEnd_, ^{
    runInPool([&] {
      if (const auto self = weak.lock()) self->post(self->element_);
    });
  });
  dispatch_activate(processEnd_);
}

void Observation::notified(AXObserverRef, AXUIElementRef element, CFStringRef, void* number) {
  auto& all = everyone();
  std::shared_ptr<Observation> found;
  {
    const std::lock_guard lock(all.mutex);
    const auto entry = all.byNumber.find(reinterpret_cast<std::uintptr_t>(number));
    if (entry != all.byNumber.end()) found = entry->second.lock();
  }
  if (found) found->post(MacElement::wrap(CFOwner<AXUIElementRef>::retain(element)));
}

void Observation::post(AXElement poster) {
  hopToMain([weak = weak_from_this(), poster = std::move(poster)] {
    if (const auto self = weak.lock()) self->tell(poster);
  });
}

void Observation::tell(const AXElement& poster) {
  if (isOnce_ && std::exchange(isTold_, true)) return;
  handler_(poster);
}

}  // namespace

std::expected<Subscription, AXError> observeElement(const AXElement& element,
                                                    std::string_view notification,
                                                    std::function<void(const AXElement&)> handler,
                                                    Seconds timeout) {
  auto observation = std::make_shared<Observation>(
      element, std::move(handler), notification == AX::notification::elementDestroyed);
  const auto error = observation->begin(notification, timeout);
  if (error != AXError::success) return std::unexpected(error);
  return Subscription([observation = std::move(observation)]() mutable { observation.reset(); });
}

}  // namespace pellow
