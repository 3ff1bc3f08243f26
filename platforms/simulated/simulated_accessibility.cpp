#include "platforms/simulated/simulated_accessibility.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {
namespace {

constexpr Seconds defaultMessagingTimeout = 6;

using Answer = std::expected<AXValue, AXError>;

std::string_view verb(AXCall call) {
  switch (call) {
    case AXCall::read:
      return "reads";
    case AXCall::write:
      return "writes";
    case AXCall::perform:
      return "performs";
  }
  return "";
}

std::optional<AXError> takeFault(std::vector<AXFault>& faults, AXCall call, std::string_view name) {
  const auto found = std::ranges::find_if(faults, [&](const AXFault& fault) {
    return (fault.name.empty() || fault.name == name) && (!fault.call || fault.call == call);
  });
  if (found == faults.end()) return std::nullopt;
  const auto error = found->error;
  if (found->once) faults.erase(found);
  return error;
}

// What all elements have in common: the road of a call to the other application.
class Element : public AXElement::Object {
 public:
  explicit Element(SimulatedSystem& system) : system_(system) {}

  void setMessagingTimeout(Seconds timeout) override { timeout_ = timeout; }

  Answer copyAttribute(std::string_view attribute) const override {
    if (const auto error = arrive(AXCall::read, attribute)) return std::unexpected(*error);
    return read(attribute);
  }
  std::expected<void, AXError> setAttribute(std::string_view attribute,
                                            const AXValue& value) override {
    Seconds tooLateBy = 0;
    if (const auto error = arrive(AXCall::write, attribute, &tooLateBy)) {
      if (tooLateBy > 0 && isAlive()) writeLate(tooLateBy, attribute, value);
      return std::unexpected(*error);
    }
    return write(attribute, value);
  }
  std::expected<void, AXError> performAction(std::string_view action) override {
    if (const auto error = arrive(AXCall::perform, action)) return std::unexpected(*error);
    return perform(action);
  }
  std::expected<ProcessID, AXError> pid() const override {
    if (!system_.portCall("asks for the process of {}", describe()))
      return std::unexpected(AXError::cannotComplete);
    if (!isAlive()) return std::unexpected(AXError::invalidUIElement);
    return owner();
  }

 protected:
  DesktopState& desktop() const { return system_.state; }
  SimulatedSystem& system() const { return system_; }

  virtual std::string describe() const = 0;
  virtual ProcessID owner() const = 0;
  virtual bool isAlive() const = 0;
  virtual Seconds delay() const { return 0; }
  // A call arrives, which the element may take as a reason to go.
  virtual void countCall() const {}
  virtual std::vector<AXFault>* faults() const { return nullptr; }

  virtual Answer read(std::string_view attribute) const = 0;
  virtual std::expected<void, AXError> write(std::string_view, const AXValue&) {
    return std::unexpected(AXError::attributeUnsupported);
  }
  // The caller has given up.
  virtual void writeLate(Seconds, std::string_view, const AXValue&) {}
  virtual std::expected<void, AXError> perform(std::string_view) {
    return std::unexpected(AXError::actionUnsupported);
  }

 private:
  // The error that ends the call on its way; none when the application now answers it.
  std::optional<AXError> arrive(AXCall call, std::string_view name,
                                Seconds* tooLateBy = nullptr) const {
    if (!system_.portCall("{} {} of {}", verb(call), name, describe()))
      return AXError::cannotComplete;
    if (!desktop().trustsProcess) return AXError::apiDisabled;
    if (!isAlive()) return AXError::invalidUIElement;
    const auto late = travel();
    if (tooLateBy) *tooLateBy = late;
    if (late > 0 || !system_.processRuns()) return AXError::cannotComplete;
    if (isAlive()) countCall();
    if (!isAlive()) return AXError::invalidUIElement;
    if (auto* own = faults())
      if (const auto error = takeFault(*own, call, name)) return error;
    return takeFault(desktop().faults, call, name);
  }

  // Waits for the application; by how long it misses the messaging timeout.
  Seconds travel() const {
    auto duration = delay();
    if (desktop().longestExtraDelay > 0)
      duration += desktop().longestExtraDelay * system_.scheduler.randomFraction();
    if (duration > 0) system_.scheduler.sleep(std::min(duration, timeout_));
    return std::max(duration - timeout_, 0.0);
  }

  SimulatedSystem& system_;
  Seconds timeout_ = defaultMessagingTimeout;
};

class WindowElement final : public Element {
 public:
  WindowElement(SimulatedSystem& system, WindowID window) : Element(system), id_(window) {
    const auto* state = desktop().window(window);
    pid_ = state ? state->pid : 0;
  }

  WindowID window() const { return id_; }

  bool equals(const AXElement::Object& other) const override {
    const auto* element = dynamic_cast<const WindowElement*>(&other);
    return element && element->id_ == id_;
  }

 protected:
  std::string describe() const override { return fmt::format("window {}", id_); }
  ProcessID owner() const override { return pid_; }
  bool isAlive() const override { return desktop().window(id_) != nullptr; }
  Seconds delay() const override {
    return state().manners.answersAfter + desktop().application(pid_)->answersAfter;
  }
  void countCall() const override {
    auto& left = state().manners.callsUntilClosed;
    if (left && --*left <= 0) system().closeWindow(id_);
  }
  std::vector<AXFault>* faults() const override { return &state().manners.faults; }

  Answer read(std::string_view attribute) const override {
    const auto& window = state();
    if (attribute == "AXRole") return "AXWindow";
    if (attribute == "AXSubrole") return window.subrole;
    if (attribute == "AXTitle") return window.title;
    if (attribute == "AXPosition") return window.frame.origin;
    if (attribute == "AXSize") return window.frame.size;
    if (attribute == "AXMinimized") return window.minimized;
    if (attribute == "AXParent") return applicationElement(system(), pid_);
    return std::unexpected(AXError::attributeUnsupported);
  }

  std::expected<void, AXError> write(std::string_view attribute, const AXValue& value) override {
    return desktop().write(id_, attribute, value);
  }
  void writeLate(Seconds after, std::string_view attribute, const AXValue& value) override {
    if (state().manners.actsLate) system().writeLate(after, id_, attribute, value);
  }

  std::expected<void, AXError> perform(std::string_view action) override {
    if (action != "AXRaise") return std::unexpected(AXError::actionUnsupported);
    desktop().raise(id_);
    return {};
  }

 private:
  WindowState& state() const { return *desktop().window(id_); }

  WindowID id_;
  ProcessID pid_ = 0;
};

class ApplicationElement final : public Element {
 public:
  ApplicationElement(SimulatedSystem& system, ProcessID pid) : Element(system), pid_(pid) {}

  bool equals(const AXElement::Object& other) const override {
    const auto* element = dynamic_cast<const ApplicationElement*>(&other);
    return element && element->pid_ == pid_;
  }

 protected:
  std::string describe() const override { return fmt::format("application {}", pid_); }
  ProcessID owner() const override { return pid_; }
  bool isAlive() const override { return desktop().application(pid_) != nullptr; }
  Seconds delay() const override { return desktop().application(pid_)->answersAfter; }

  Answer read(std::string_view attribute) const override {
    if (attribute == "AXRole") return "AXApplication";
    if (attribute == "AXTitle") return desktop().application(pid_)->identity.localizedName;
    if (attribute == "AXWindows") {
      std::vector<AXElement> elements;
      for (const auto id : desktop().windowsOf(pid_))
        elements.push_back(windowElement(system(), id));
      return elements;
    }
    if (attribute == "AXFocusedWindow") {
      const auto focused = desktop().application(pid_)->focusedWindow;
      if (!focused) return std::unexpected(AXError::noValue);
      return windowElement(system(), *focused);
    }
    return std::unexpected(AXError::attributeUnsupported);
  }

 private:
  ProcessID pid_;
};

class SystemWideElement final : public Element {
 public:
  using Element::Element;

  bool equals(const AXElement::Object& other) const override {
    return dynamic_cast<const SystemWideElement*>(&other) != nullptr;
  }

 protected:
  std::string describe() const override { return "the whole system"; }
  ProcessID owner() const override { return 0; }
  bool isAlive() const override { return true; }

  Answer read(std::string_view attribute) const override {
    if (attribute == "AXRole") return "AXSystemWide";
    if (attribute != "AXFocusedApplication") return std::unexpected(AXError::attributeUnsupported);
    if (!desktop().frontmost) return std::unexpected(AXError::noValue);
    return applicationElement(system(), *desktop().frontmost);
  }
};

}  // namespace

bool SimulatedAccessibility::isProcessTrusted() const { return system_.state.trustsProcess; }

AXElement SimulatedAccessibility::systemWide() {
  return AXElement(std::make_shared<SystemWideElement>(system_));
}

AXElement SimulatedAccessibility::application(ProcessID pid) {
  return applicationElement(system_, pid);
}

std::expected<Subscription, AXError> SimulatedAccessibility::observe(
    const AXElement& element, std::string_view notification, std::function<void()> handler) {
  const auto* window = dynamic_cast<const WindowElement*>(&element.object());
  if (!system_.portCall("observes {}", notification))
    return std::unexpected(AXError::cannotComplete);
  if (!window || notification != "AXUIElementDestroyed")
    return std::unexpected(AXError::notificationUnsupported);
  if (!system_.state.window(window->window())) return std::unexpected(AXError::invalidUIElement);
  return system_.windowDestroyed[window->window()].add(std::move(handler));
}

AXElement windowElement(SimulatedSystem& system, WindowID window) {
  return AXElement(std::make_shared<WindowElement>(system, window));
}

AXElement applicationElement(SimulatedSystem& system, ProcessID pid) {
  return AXElement(std::make_shared<ApplicationElement>(system, pid));
}

}  // namespace pellow::simulated
