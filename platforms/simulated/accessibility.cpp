#include "platforms/simulated/accessibility.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include <fmt/ranges.h>

#include "platforms/simulated/panels.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {
namespace {

using Answer = std::expected<AXValue, AXError>;

Answer named(std::string_view name) { return std::string(name); }

std::string_view verb(AXCall call) {
  switch (call) {
    case AXCall::read:
      return "reads";
    case AXCall::write:
      return "writes";
    case AXCall::perform:
      return "performs";
    case AXCall::pid:
      return "asks for";
    case AXCall::observe:
      return "observes";
    case AXCall::hitTest:
      return "asks for";
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

// The application may quit when a call arrives.
void countCallOf(System& system, ProcessID pid) {
  auto& called = *system.state.application(pid);
  auto& left = called.callsUntilQuit;
  if (!left || --*left > 0) return;
  system.change([pid](DesktopState& desktop) { desktop.endApplication(pid); });
}

// What all elements share: the way of a call to the other application.
class Element : public AXElement::Object {
 public:
  explicit Element(System& system) : system_(system) {}

  Answer copyAttribute(std::string_view attribute, Seconds timeout) const override {
    if (const auto error = arrive(AXCall::read, attribute, timeout)) return std::unexpected(*error);
    return read(attribute);
  }
  std::vector<Answer> copyMultipleAttributeValues(std::span<const std::string_view> attributes,
                                                  Seconds timeout) const override {
    std::vector<Answer> answers;
    const auto failure =
        arrive(AXCall::read, fmt::format("{}", fmt::join(attributes, ", ")), timeout);
    for (const auto attribute : attributes) {
      const auto error = failure ? failure : orderedFault(AXCall::read, attribute);
      answers.push_back(error ? Answer(std::unexpected(*error)) : read(attribute));
    }
    return answers;
  }
  std::expected<void, AXError> setAttribute(std::string_view attribute, const AXValue& value,
                                            Seconds timeout) override {
    Seconds tooLateBy = 0;
    if (const auto error = arrive(AXCall::write, attribute, timeout, &tooLateBy)) {
      if (tooLateBy > 0 && isAlive()) writeLate(tooLateBy, attribute, value);
      return std::unexpected(*error);
    }
    return write(attribute, value);
  }
  std::expected<void, AXError> performAction(std::string_view action, Seconds timeout) override {
    if (const auto error = arrive(AXCall::perform, action, timeout)) return std::unexpected(*error);
    return perform(action);
  }
  std::expected<ProcessID, AXError> pid() const override {
    if (!system_.portCall([this] { return "asks for the process of " + describe(); }))
      return std::unexpected(AXError::cannotComplete);
    if (!isAlive()) return std::unexpected(AXError::invalidUIElement);
    if (const auto error = orderedFault(AXCall::pid, "pid")) return std::unexpected(*error);
    return owner();
  }

  // Asks the application like any other call; the call's error, or none.
  std::optional<AXError> ask(AXCall call, std::string_view name, Seconds timeout) const {
    return arrive(call, name, timeout);
  }
  virtual std::expected<Subscription, AXError> observe(
      std::string_view, std::function<void(const AXElement&)>) const {
    return std::unexpected(AXError::notificationUnsupported);
  }

 protected:
  DesktopState& desktop() const { return system_.state; }
  System& system() const { return system_; }

  virtual std::string describe() const = 0;
  virtual ProcessID owner() const = 0;
  virtual bool isAlive() const = 0;
  virtual Seconds delay() const { return 0; }
  virtual bool hangs() const { return false; }
  // The element may go when a call arrives.
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
  // The error that ends the call on its way; none when it reaches an application that answers.
  std::optional<AXError> arrive(AXCall call, std::string_view name, Seconds timeout,
                                Seconds* tooLateBy = nullptr) const {
    const auto description = [&] {
      return fmt::format("{} {} of {}", verb(call), name, describe());
    };
    if (!system_.portCall(description)) return AXError::cannotComplete;
    if (!desktop().trustsProcess) return AXError::apiDisabled;
    if (!isAlive()) return AXError::invalidUIElement;
    const auto late = travel(call, timeout);
    if (tooLateBy) *tooLateBy = late;
    if (late > 0 || !system_.processRuns()) return AXError::cannotComplete;
    if (!desktop().trustsProcess) return AXError::apiDisabled;
    if (isAlive()) countCall();
    if (!isAlive()) return AXError::invalidUIElement;
    if (const auto error = orderedFault(call, name)) return error;
    return randomFault();
  }

  // Waits for the application; answers by how long it misses the messaging timeout.
  Seconds travel(AXCall call, Seconds timeout) const {
    auto& scheduler = system_.scheduler;
    const bool takesTime = call != AXCall::observe;
    auto duration = takesTime && isAlive() ? delay() : 0;
    if (takesTime && desktop().longestExtraDelay > 0)
      duration += desktop().longestExtraDelay * scheduler.randomFraction();
    if (duration == 0 && !hangs()) return 0;
    const auto answer = scheduler.now() + duration;
    const auto giveUp = scheduler.now() + timeout;
    const auto isStuck = [this] { return isAlive() && hangs(); };
    scheduler.wait({.what = "an answer of " + describe(),
                    .moment = [&] { return isStuck() ? giveUp : std::min(answer, giveUp); }});
    if (isStuck()) return never;
    return std::max(answer - giveUp, 0.0);
  }

  std::optional<AXError> orderedFault(AXCall call, std::string_view name) const {
    if (auto* own = faults())
      if (const auto error = takeFault(*own, call, name)) return error;
    return takeFault(desktop().faults, call, name);
  }

  std::optional<AXError> randomFault() const {
    const auto& errors = desktop().possibleFaults;
    if (errors.empty() || desktop().faultProbability <= 0) return std::nullopt;
    if (system_.scheduler.randomFraction() >= desktop().faultProbability) return std::nullopt;
    return errors[system_.scheduler.random(errors.size())];
  }

  System& system_;
};

// The elements of a window: itself, its minimize button, its content.
class WindowElement final : public Element {
 public:
  WindowElement(System& system, WindowID window, WindowPart part = WindowPart::window)
      : Element(system), id_(window), part_(part) {
    const auto* state = desktop().window(window);
    pid_ = state ? state->pid : 0;
  }

  bool equals(const AXElement::Object& other) const override {
    const auto* element = dynamic_cast<const WindowElement*>(&other);
    return element && element->id_ == id_ && element->part_ == part_;
  }

  std::expected<Subscription, AXError> observe(
      std::string_view notification, std::function<void(const AXElement&)> handler) const override {
    if (part_ != WindowPart::window || notification != AX::notification::elementDestroyed)
      return std::unexpected(AXError::notificationUnsupported);
    return system().observeElement(pid_, id_, notification, std::move(handler));
  }

 protected:
  std::string describe() const override {
    switch (part_) {
      case WindowPart::window:
        return fmt::format("window {}", id_);
      case WindowPart::minimizeButton:
        return fmt::format("the minimize button of window {}", id_);
      case WindowPart::content:
        return fmt::format("the content of window {}", id_);
    }
    return {};
  }
  ProcessID owner() const override { return pid_; }
  bool isAlive() const override {
    const auto* window = desktop().window(id_);
    return window && (part_ != WindowPart::minimizeButton || window->hasMinimizeButton);
  }
  Seconds delay() const override {
    return state().manners.answersAfter + desktop().application(pid_)->answersAfter;
  }
  bool hangs() const override { return desktop().application(pid_)->hangs; }
  void countCall() const override {
    auto& left = state().manners.callsUntilClosed;
    if (left && --*left <= 0) system().change([this](DesktopState& desk) { desk.close(id_); });
    countCallOf(system(), pid_);
  }
  std::vector<AXFault>* faults() const override { return &state().manners.faults; }

  Answer read(std::string_view attribute) const override {
    const auto frame = frameOf(part_, state().frame);
    if (attribute == AX::attribute::position) return frame.origin;
    if (attribute == AX::attribute::size) return frame.size;
    switch (part_) {
      case WindowPart::window:
        return readWindow(attribute);
      case WindowPart::minimizeButton:
        if (attribute == AX::attribute::role) return named(AX::role::button);
        if (attribute == AX::attribute::subrole) return named(AX::subrole::minimizeButton);
        break;
      case WindowPart::content:
        if (attribute == AX::attribute::role) return named(AX::role::group);
        break;
    }
    if (attribute == AX::attribute::parent) return windowElement(system(), id_);
    return std::unexpected(AXError::attributeUnsupported);
  }

  std::expected<void, AXError> write(std::string_view attribute, const AXValue& value) override {
    if (part_ != WindowPart::window) return std::unexpected(AXError::attributeUnsupported);
    std::expected<void, AXError> answer;
    system().change([&](DesktopState& desk) { answer = desk.write(id_, attribute, value); });
    return answer;
  }
  void writeLate(Seconds after, std::string_view attribute, const AXValue& value) override {
    if (part_ == WindowPart::window && state().manners.actsLate)
      system().writeLate(after, id_, attribute, value);
  }

  std::expected<void, AXError> perform(std::string_view action) override {
    const auto id = id_;
    if (part_ == WindowPart::window && action == AX::action::raise)
      system().change([id](DesktopState& desk) { desk.raise(id); });
    else if (part_ == WindowPart::minimizeButton && action == AX::action::press)
      system().change([id](DesktopState& desk) { desk.minimize(id, Actor::program); });
    else
      return std::unexpected(AXError::actionUnsupported);
    return {};
  }

 private:
  WindowState& state() const { return *desktop().window(id_); }

  AXElement part(WindowPart part) const {
    return AXElement(std::make_shared<WindowElement>(system(), id_, part));
  }

  Answer readWindow(std::string_view attribute) const {
    const auto& window = state();
    if (attribute == AX::attribute::role) return named(AX::role::window);
    if (attribute == AX::attribute::subrole) return orNoValue(window.subrole);
    if (attribute == AX::attribute::title) return window.title;
    if (attribute == AX::attribute::minimized) return window.minimized;
    if (attribute == AX::attribute::parent) return applicationElement(system(), pid_);
    if (attribute == AX::attribute::minimizeButton) {
      if (!window.hasMinimizeButton) return std::unexpected(AXError::noValue);
      return part(WindowPart::minimizeButton);
    }
    if (attribute == AX::attribute::children) {
      std::vector<AXElement> children{part(WindowPart::content)};
      if (window.hasMinimizeButton) children.push_back(part(WindowPart::minimizeButton));
      return children;
    }
    return std::unexpected(AXError::attributeUnsupported);
  }

  static Answer orNoValue(const std::string& text) {
    if (text.empty()) return std::unexpected(AXError::noValue);
    return text;
  }

  WindowID id_;
  WindowPart part_;
  ProcessID pid_ = 0;
};

class ApplicationElement final : public Element {
 public:
  ApplicationElement(System& system, ProcessID pid) : Element(system), pid_(pid) {}

  bool equals(const AXElement::Object& other) const override {
    const auto* element = dynamic_cast<const ApplicationElement*>(&other);
    return element && element->pid_ == pid_;
  }

  std::expected<Subscription, AXError> observe(
      std::string_view notification, std::function<void(const AXElement&)> handler) const override {
    if (notification != AX::notification::windowMiniaturized &&
        notification != AX::notification::focusedWindowChanged)
      return std::unexpected(AXError::notificationUnsupported);
    if (desktop().application(pid_)->refusesObservers)
      return std::unexpected(AXError::cannotComplete);
    return system().observeElement(pid_, 0, notification, std::move(handler));
  }

 protected:
  std::string describe() const override { return fmt::format("application {}", pid_); }
  ProcessID owner() const override { return pid_; }
  bool isAlive() const override { return desktop().application(pid_) != nullptr; }
  Seconds delay() const override { return desktop().application(pid_)->answersAfter; }
  bool hangs() const override { return desktop().application(pid_)->hangs; }
  void countCall() const override { countCallOf(system(), pid_); }

  Answer read(std::string_view attribute) const override {
    if (attribute == AX::attribute::role) return named(AX::role::application);
    if (attribute == AX::attribute::title)
      return desktop().application(pid_)->identity.localizedName;
    if (attribute == AX::attribute::windows) {
      std::vector<AXElement> elements;
      for (const auto id : desktop().windowsOf(pid_))
        if (!desktop().isOnOtherSpace(*desktop().window(id)))
          elements.push_back(windowElement(system(), id));
      return elements;
    }
    if (attribute == AX::attribute::focusedWindow) {
      const auto focused = desktop().application(pid_)->focusedWindow;
      if (!focused) return std::unexpected(AXError::noValue);
      return windowElement(system(), *focused);
    }
    if (attribute == AX::attribute::hidden) return desktop().application(pid_)->hidden;
    if (attribute == AX::attribute::frontmost) return desktop().frontmost == pid_;
    return std::unexpected(AXError::attributeUnsupported);
  }

  std::expected<void, AXError> write(std::string_view attribute, const AXValue& value) override {
    if (attribute != AX::attribute::frontmost)
      return std::unexpected(AXError::attributeUnsupported);
    if (value != AXValue(true)) return std::unexpected(AXError::illegalArgument);
    system().change([pid = pid_](DesktopState& desk) { desk.activate(pid); });
    return {};
  }

 private:
  ProcessID pid_;
};

// A panel of the program as others see it.
class PanelElement final : public Element {
 public:
  PanelElement(System& system, const Panels& panels, PanelID panel)
      : Element(system), panels_(panels), id_(panel) {}

  bool equals(const AXElement::Object& other) const override {
    const auto* element = dynamic_cast<const PanelElement*>(&other);
    return element && element->id_ == id_;
  }

 protected:
  std::string describe() const override { return fmt::format("panel {}", id_); }
  ProcessID owner() const override { return system().ownPid(); }
  bool isAlive() const override { return panels_.withID(id_) != nullptr; }

  Answer read(std::string_view attribute) const override {
    const auto frame = desktop().flip().toQuartz(panels_.withID(id_)->frameNow());
    if (attribute == AX::attribute::role) return named(AX::role::window);
    if (attribute == AX::attribute::subrole) return named(AX::subrole::unknown);
    if (attribute == AX::attribute::position) return frame.origin;
    if (attribute == AX::attribute::size) return frame.size;
    if (attribute == AX::attribute::parent) return applicationElement(system(), owner());
    return std::unexpected(AXError::attributeUnsupported);
  }

 private:
  const Panels& panels_;
  PanelID id_;
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
    if (attribute == AX::attribute::role) return named(AX::role::systemWide);
    if (attribute != AX::attribute::focusedApplication)
      return std::unexpected(AXError::attributeUnsupported);
    if (!desktop().frontmost) return std::unexpected(AXError::noValue);
    return applicationElement(system(), *desktop().frontmost);
  }
};

}  // namespace

bool Accessibility::isProcessTrusted() const { return system_.state.trustsProcess; }

bool Accessibility::isProcessTrustedWithPrompt() {
  if (!system_.portCall("asks for the permission to use elements")) return false;
  if (!isProcessTrusted()) ++system_.state.trustPrompts;
  return isProcessTrusted();
}

AXElement Accessibility::systemWide() {
  return AXElement(std::make_shared<SystemWideElement>(system_));
}

AXElement Accessibility::application(ProcessID pid) { return applicationElement(system_, pid); }

std::expected<AXElement, AXError> Accessibility::elementAtPosition(const AXElement& systemWide,
                                                                   QuartzPoint point,
                                                                   Seconds timeout) {
  const auto* system = dynamic_cast<const SystemWideElement*>(&systemWide.object());
  if (!system) return std::unexpected(AXError::illegalArgument);
  const auto& desktop = system_.state;
  const auto panelThere = [&] { return panels_.panelAt(desktop.toAppKit(point)); };
  const auto id = panelThere() ? std::nullopt : desktop.windowAt(point);
  if (!id) {
    if (const auto error = system->ask(AXCall::hitTest, "elementAtPosition", timeout))
      return std::unexpected(*error);
    const auto* panel = panelThere();
    if (!panel) return std::unexpected(AXError::noValue);
    return AXElement(std::make_shared<PanelElement>(system_, panels_, panel->id()));
  }

  // Asks the application whose window lies there, which answers by what is there by then.
  const WindowElement window(system_, *id);
  if (const auto error = window.ask(AXCall::hitTest, "elementAtPosition", timeout))
    return std::unexpected(*error);
  const auto& found = *desktop.window(*id);
  if (!desktop.isVisible(found) || !found.frame.contains(point))
    return std::unexpected(AXError::noValue);
  return AXElement(std::make_shared<WindowElement>(system_, *id, desktop.partAt(found, point)));
}

std::expected<Subscription, AXError> Accessibility::observe(
    const AXElement& element, std::string_view notification,
    std::function<void(const AXElement&)> handler, Seconds timeout) {
  const auto& observed = dynamic_cast<const Element&>(element.object());
  if (const auto error = observed.ask(AXCall::observe, notification, timeout))
    return std::unexpected(*error);
  return observed.observe(notification, std::move(handler));
}

void Accessibility::setTrusted(bool trusted) { system_.state.trustsProcess = trusted; }

int Accessibility::prompts() const { return system_.state.trustPrompts; }

void Accessibility::failNext(std::string name, AXError error, std::optional<AXCall> call) {
  system_.state.faults.push_back({std::move(name), call, error, true});
}

void Accessibility::injectFaults(double probability, std::vector<AXError> errors) {
  system_.state.faultProbability = probability;
  system_.state.possibleFaults = std::move(errors);
}

void Accessibility::delayAnswers(Seconds longest) { system_.state.longestExtraDelay = longest; }

AXElement windowElement(System& system, WindowID window) {
  return AXElement(std::make_shared<WindowElement>(system, window));
}

AXElement applicationElement(System& system, ProcessID pid) {
  return AXElement(std::make_shared<ApplicationElement>(system, pid));
}

}  // namespace pellow::simulated
