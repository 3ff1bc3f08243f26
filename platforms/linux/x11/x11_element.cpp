#include "platforms/linux/x11/x11_element.h"

#include <unistd.h>

#include <algorithm>

#include "platforms/linux/x11/application_activation.h"
#include "platforms/linux/x11/application_hiding.h"
#include "platforms/linux/x11/application_windows.h"
#include "platforms/linux/x11/client_processes.h"
#include "platforms/linux/x11/hit_test.h"

namespace pellow {

namespace {

using Answer = std::expected<AXValue, AXError>;
using Outcome = std::expected<void, AXError>;

Answer named(std::string_view name) { return std::string(name); }

struct Context {
  X11Server& server;
  WindowManager& windowManager;
};

class X11Element : public AXElement::Object {
 public:
  explicit X11Element(Context context) : context_(context) {}

  std::vector<Answer> copyMultipleAttributeValues(std::span<const std::string_view> attributes,
                                                  Seconds timeout) const override {
    std::vector<Answer> answers;
    for (const auto attribute : attributes) answers.push_back(copyAttribute(attribute, timeout));
    return answers;
  }
  std::expected<void, AXError> setAttribute(std::string_view, const AXValue&, Seconds) override {
    return std::unexpected(AXError::attributeUnsupported);
  }
  std::expected<void, AXError> performAction(std::string_view, Seconds) override {
    return std::unexpected(AXError::actionUnsupported);
  }

 protected:
  X11Server& server() const { return context_.server; }
  const Context& context() const { return context_; }
  // Whether answers may be missing from what was asked for until `end`.
  bool isIncomplete(Deadline end) const { return hasPassed(end) || server().connection().isLost(); }
  std::unexpected<AXError> nothingFound(Deadline end) const {
    return std::unexpected(isIncomplete(end) ? AXError::cannotComplete : AXError::noValue);
  }

 private:
  Context context_;
};

AXElement applicationElement(Context context, ProcessID pid);

class WindowElement : public X11Element {
 public:
  WindowElement(Context context, WindowKey window, ProcessID pid)
      : X11Element(context), window_(window), pid_(pid) {}

  bool equals(const Object& other) const override {
    const auto* window = dynamic_cast<const WindowElement*>(&other);
    return window && window->window_ == window_;
  }
  std::expected<ProcessID, AXError> pid() const override { return pid_; }

  Answer copyAttribute(std::string_view attribute, Seconds timeout) const override;
  std::vector<Answer> copyMultipleAttributeValues(std::span<const std::string_view> attributes,
                                                  Seconds timeout) const override;
  Outcome setAttribute(std::string_view attribute, const AXValue& value, Seconds timeout) override;
  Outcome performAction(std::string_view action, Seconds timeout) override;

  const WindowKey& key() const { return window_; }
  bool isGone(Seconds timeout) const { return isGone(deadlineIn(timeout)); }
  bool isGone(Deadline deadline) const {
    const auto found = facts(Facet::state, deadline);
    return !found && found.error() == AXError::invalidUIElement;
  }

 private:
  // A withdrawn window is no window to anybody, even if its application keeps it for later.
  std::expected<WindowFacts, AXError> facts(Facet facets, Deadline deadline) const {
    auto found = look(server(), window_, facets | Facet::state, deadline);
    if (found && found->state.withdrawn) return std::unexpected(AXError::invalidUIElement);
    return found;
  }
  Answer value(std::string_view attribute, const WindowFacts& found, Deadline deadline) const;
  Outcome setMinimized(bool minimized, Deadline deadline);

  const WindowKey window_;
  const ProcessID pid_;
};

// The button that minimizes a window.
class ButtonElement : public X11Element {
 public:
  ButtonElement(Context context, std::shared_ptr<const WindowElement> window)
      : X11Element(context), window_(std::move(window)) {}

  bool equals(const Object& other) const override {
    const auto* button = dynamic_cast<const ButtonElement*>(&other);
    return button && button->window_->equals(*window_);
  }
  std::expected<ProcessID, AXError> pid() const override { return window_->pid(); }

  Answer copyAttribute(std::string_view attribute, Seconds timeout) const override;

 private:
  const std::shared_ptr<const WindowElement> window_;
};

Answer ButtonElement::copyAttribute(std::string_view attribute, Seconds timeout) const {
  if (attribute == AX::attribute::parent)
    return AXValue(
        AXElement(std::make_shared<WindowElement>(context(), window_->key(), *window_->pid())));
  if (window_->isGone(timeout)) return std::unexpected(AXError::invalidUIElement);
  if (attribute == AX::attribute::role) return named(AX::role::button);
  if (attribute == AX::attribute::subrole) return named(AX::subrole::minimizeButton);
  if (attribute != AX::attribute::position && attribute != AX::attribute::size)
    return std::unexpected(AXError::attributeUnsupported);
  const auto place = context().windowManager.titleBars().minimizeButton(window_->key().window,
                                                                        deadlineIn(timeout));
  if (!place) return std::unexpected(AXError::cannotComplete);
  const auto frame = server().layout().toQuartz(*place);
  if (attribute == AX::attribute::position) return AXValue(frame.origin);
  return AXValue(frame.size);
}

std::string_view subrole(WindowKind kind) {
  switch (kind) {
    case WindowKind::standard:
      return AX::subrole::standardWindow;
    case WindowKind::dialog:
      return AX::subrole::dialog;
    case WindowKind::floating:
      return AX::subrole::floatingWindow;
    case WindowKind::furniture:
      break;
  }
  return AX::subrole::unknown;
}

// What to look at for an attribute of a window; nothing that it does not have.
std::optional<Facet> facetOf(std::string_view attribute) {
  if (attribute == AX::attribute::role || attribute == AX::attribute::minimized ||
      attribute == AX::attribute::parent)
    return Facet::state;
  if (attribute == AX::attribute::subrole) return Facet::kind;
  if (attribute == AX::attribute::title) return Facet::title;
  if (attribute == AX::attribute::position || attribute == AX::attribute::size) return Facet::frame;
  return std::nullopt;
}

Answer WindowElement::value(std::string_view attribute, const WindowFacts& found,
                            Deadline deadline) const {
  if (attribute == AX::attribute::subrole) return named(subrole(found.kind));
  if (attribute == AX::attribute::title) return found.title;
  if (attribute == AX::attribute::position) return server().layout().toQuartz(found.frame).origin;
  if (attribute == AX::attribute::size) return server().layout().toQuartz(found.frame).size;
  if (attribute == AX::attribute::minimized) return isMinimized(server(), found.state, deadline);
  if (attribute == AX::attribute::parent) return applicationElement(context(), pid_);
  return named(AX::role::window);
}

Answer WindowElement::copyAttribute(std::string_view attribute, Seconds timeout) const {
  return copyMultipleAttributeValues({&attribute, 1}, timeout).front();
}

std::vector<Answer> WindowElement::copyMultipleAttributeValues(
    std::span<const std::string_view> attributes, Seconds timeout) const {
  const Deadline end = deadlineIn(timeout);
  auto facets = Facet::state;
  for (const auto attribute : attributes) facets = facets | facetOf(attribute).value_or(facets);
  const auto found = facts(facets, end);
  std::vector<Answer> answers;
  for (const auto attribute : attributes) {
    if (!facetOf(attribute))
      answers.emplace_back(std::unexpected(AXError::attributeUnsupported));
    else
      answers.push_back(found ? value(attribute, *found, end) : std::unexpected(found.error()));
  }
  return answers;
}

Outcome WindowElement::setAttribute(std::string_view attribute, const AXValue& value,
                                    Seconds timeout) {
  if (attribute == AX::attribute::position) {
    const auto* position = std::get_if<QuartzPoint>(&value);
    if (!position) return std::unexpected(AXError::illegalArgument);
    return context().windowManager.parking().moveFrame(window_, *position, deadlineIn(timeout));
  }
  if (attribute == AX::attribute::minimized) {
    const auto* minimized = std::get_if<bool>(&value);
    if (!minimized) return std::unexpected(AXError::illegalArgument);
    return setMinimized(*minimized, deadlineIn(timeout));
  }
  return std::unexpected(AXError::attributeUnsupported);
}

Outcome WindowElement::setMinimized(bool minimized, Deadline deadline) {
  auto& iconifier = context().windowManager.iconifier();
  return minimized ? iconifier.minimize(window_, deadline)
                   : iconifier.unminimize(window_, deadline);
}

Outcome WindowElement::performAction(std::string_view action, Seconds timeout) {
  if (action != AX::action::raise) return std::unexpected(AXError::actionUnsupported);
  const auto raised = context().windowManager.foreground().raise(window_, deadlineIn(timeout));
  if (raised) server().setFrontWindow(pid_, window_);
  return raised;
}

class ApplicationElement : public X11Element {
 public:
  ApplicationElement(Context context, ProcessID pid) : X11Element(context), pid_(pid) {}

  bool isGone() const { return pid_ > 0 && !isAlive(pid_); }

  bool equals(const Object& other) const override {
    const auto* application = dynamic_cast<const ApplicationElement*>(&other);
    return application && application->pid_ == pid_;
  }
  std::expected<ProcessID, AXError> pid() const override { return pid_; }

  Answer copyAttribute(std::string_view attribute, Seconds timeout) const override;
  Outcome setAttribute(std::string_view attribute, const AXValue& value, Seconds timeout) override;

 private:
  // Those of its windows in the list of clients that are more than furniture.
  std::vector<WindowFacts> ownWindows(const std::vector<xcb_window_t>& among,
                                      Deadline deadline) const;
  AXElement element(const WindowFacts& window) const {
    return AXElement(std::make_shared<WindowElement>(context(), window.key(), pid_));
  }
  Answer windows(Deadline end) const;
  Answer focusedWindow(Deadline end) const;
  Answer isHidden(Deadline end) const;
  Answer isFrontmost(Deadline end) const;

  const ProcessID pid_;
};

Answer ApplicationElement::copyAttribute(std::string_view attribute, Seconds timeout) const {
  if (attribute == AX::attribute::windows) return windows(deadlineIn(timeout));
  if (attribute == AX::attribute::focusedWindow) return focusedWindow(deadlineIn(timeout));
  if (attribute == AX::attribute::hidden) return isHidden(deadlineIn(timeout));
  if (attribute == AX::attribute::frontmost) return isFrontmost(deadlineIn(timeout));
  if (attribute == AX::attribute::role) return named(AX::role::application);
  return std::unexpected(AXError::attributeUnsupported);
}

std::vector<WindowFacts> ApplicationElement::ownWindows(const std::vector<xcb_window_t>& among,
                                                        Deadline deadline) const {
  const auto owners = owningProcesses(server(), among, deadline);
  std::vector<xcb_window_t> own;
  for (std::size_t i = 0; i < among.size(); ++i)
    if (owners[i] == pid_) own.push_back(among[i]);
  auto windows = lookAtAll(server(), own, Facet::kind | Facet::state, deadline);
  std::erase_if(windows, [](const WindowFacts& window) {
    return window.kind == WindowKind::furniture || window.state.withdrawn;
  });
  giveIdentities(server(), windows, deadline);
  return windows;
}

Answer ApplicationElement::windows(Deadline end) const {
  const auto desktop = currentDesktop(server(), end);
  auto windows = ownWindows(clientList(server(), server().atoms().netClientList, end), end);
  std::vector<AXElement> elements;
  for (const auto& window : windows) {
    // A crash may have left windows off the monitors that are looked for on another desktop.
    if (window.state.isOn(desktop) || window.state.isPutAway() ||
        isMinimized(server(), window.state, end))
      elements.push_back(element(window));
  }
  if (isIncomplete(end)) return std::unexpected(AXError::cannotComplete);
  if (windows.empty() && !isAlive(pid_)) return std::unexpected(AXError::invalidUIElement);
  return AXValue(std::move(elements));
}

Answer ApplicationElement::focusedWindow(Deadline end) const {
  const auto active = activeWindow(server(), end);
  if (!active) return nothingFound(end);
  const auto windows = ownWindows({*active}, end);
  if (windows.empty()) return nothingFound(end);
  return AXValue(element(windows.front()));
}

Answer ApplicationElement::isHidden(Deadline end) const {
  const bool isIt = isApplicationHidden(server(), pid_, end);
  if (isIncomplete(end)) return std::unexpected(AXError::cannotComplete);
  if (!isIt && isGone()) return std::unexpected(AXError::invalidUIElement);
  return isIt;
}

Answer ApplicationElement::isFrontmost(Deadline end) const {
  const auto active = activeWindow(server(), end);
  const bool isIt = active && owningProcesses(server(), {*active}, end).front() == pid_;
  if (isIncomplete(end)) return std::unexpected(AXError::cannotComplete);
  if (!isIt && isGone()) return std::unexpected(AXError::invalidUIElement);
  return isIt;
}

Outcome ApplicationElement::setAttribute(std::string_view attribute, const AXValue& value,
                                         Seconds timeout) {
  if (attribute != AX::attribute::frontmost) return std::unexpected(AXError::attributeUnsupported);
  if (value != AXValue(true)) return std::unexpected(AXError::illegalArgument);
  const Deadline end = deadlineIn(timeout);
  if (activateApplication(server(), context().windowManager.foreground(), pid_, end)) return {};
  return std::unexpected(isIncomplete(end) ? AXError::cannotComplete : AXError::invalidUIElement);
}

class SystemElement : public X11Element {
 public:
  using X11Element::X11Element;

  bool equals(const Object& other) const override {
    return dynamic_cast<const SystemElement*>(&other) != nullptr;
  }
  std::expected<ProcessID, AXError> pid() const override { return 0; }

  Answer copyAttribute(std::string_view attribute, Seconds timeout) const override {
    if (attribute == AX::attribute::role) return named(AX::role::systemWide);
    if (attribute != AX::attribute::focusedApplication)
      return std::unexpected(AXError::attributeUnsupported);
    const Deadline end = deadlineIn(timeout);
    const auto active = activeWindow(server(), end);
    const ProcessID pid = active ? owningProcesses(server(), {*active}, end).front() : 0;
    if (pid == 0) return nothingFound(end);
    return AXValue(applicationElement(context(), pid));
  }

  std::expected<AXElement, AXError> elementAt(QuartzPoint point, Deadline end) const;
};

std::expected<AXElement, AXError> SystemElement::elementAt(QuartzPoint point, Deadline end) const {
  const auto hit = hitTest(server(), context().windowManager.titleBars(),
                           server().layout().toPixels(point), end);
  if (!hit) return std::unexpected(AXError::cannotComplete);
  if (!*hit) return nothingFound(end);
  const auto& [window, pid, isMinimizeButton] = **hit;
  if (window.kind == WindowKind::furniture && pid != getpid())
    return applicationElement(context(), pid);
  auto element = std::make_shared<WindowElement>(context(), window.key(), pid);
  if (!isMinimizeButton) return AXElement(std::move(element));
  return AXElement(std::make_shared<ButtonElement>(context(), std::move(element)));
}

AXElement applicationElement(Context context, ProcessID pid) {
  return AXElement(std::make_shared<ApplicationElement>(context, pid));
}

}  // namespace

AXElement X11Accessibility::systemWide() {
  return AXElement(std::make_shared<SystemElement>(Context{server_, windowManager_}));
}

AXElement X11Accessibility::application(ProcessID pid) {
  return applicationElement({server_, windowManager_}, pid);
}

std::expected<AXElement, AXError> X11Accessibility::elementAtPosition(const AXElement& systemWide,
                                                                      QuartzPoint point,
                                                                      Seconds timeout) {
  const auto* system = dynamic_cast<const SystemElement*>(&systemWide.object());
  if (!system) return std::unexpected(AXError::illegalArgument);
  return system->elementAt(point, deadlineIn(timeout));
}

std::expected<Subscription, AXError> X11Accessibility::observe(const AXElement& element,
                                                               std::string_view notification,
                                                               Handler handler, Seconds timeout) {
  if (dynamic_cast<const WindowElement*>(&element.object())) {
    if (notification == AX::notification::elementDestroyed)
      return observeWindow(element, std::move(handler), timeout);
  } else if (const auto* application = dynamic_cast<const ApplicationElement*>(&element.object())) {
    if (application->isGone()) return std::unexpected(AXError::invalidUIElement);
    return observeApplication(*application->pid(), notification, std::move(handler));
  }
  return std::unexpected(AXError::notificationUnsupported);
}

std::expected<Subscription, AXError> X11Accessibility::observeWindow(const AXElement& element,
                                                                     Handler handler,
                                                                     Seconds timeout) {
  const auto& window = dynamic_cast<const WindowElement&>(element.object());
  const auto tellIfGone = [this, element, &window, handler = std::move(handler),
                           isTold = std::make_shared<bool>(false)] {
    if (*isTold || !window.isGone(server_.patience())) return;
    *isTold = true;
    handler(element);
  };
  const auto add = [this, &window, tellIfGone] {
    return windowEvents_.observe(window.key().window, tellIfGone);
  };
  if (errands_.isMainThread()) {
    auto observer = add();
    if (window.isGone(timeout)) return std::unexpected(AXError::invalidUIElement);
    return observer;
  }
  if (window.isGone(timeout)) return std::unexpected(AXError::invalidUIElement);
  return observeLater([add, tellIfGone] {
    auto observer = add();
    tellIfGone();
    return observer;
  });
}

std::expected<Subscription, AXError> X11Accessibility::observeApplication(
    ProcessID pid, std::string_view notification, Handler handler) {
  const bool isMinimizing = notification == AX::notification::windowMiniaturized;
  if (!isMinimizing && notification != AX::notification::focusedWindowChanged)
    return std::unexpected(AXError::notificationUnsupported);
  const auto tell = [context = Context{server_, windowManager_}, pid,
                     handler = std::move(handler)](const WindowKey& window) {
    handler(AXElement(std::make_shared<WindowElement>(context, window, pid)));
  };
  if (!isMinimizing) {
    const auto add = [this, pid, tell] { return applicationEvents_.onFocused(pid, tell); };
    return errands_.isMainThread() ? add() : observeLater(add);
  }
  if (errands_.isMainThread()) return applicationEvents_.onMinimized(pid, tell);
  // What happens until the main thread gets to it counts, too.
  return observeLater([this, pid, tell, before = minimizedWindows(pid)] {
    return applicationEvents_.onMinimized(pid, tell, before);
  });
}

ApplicationEvents::Minimized X11Accessibility::minimizedWindows(ProcessID pid) {
  const Deadline deadline = server_.patience();
  ApplicationEvents::Minimized minimized;
  for (const auto& window :
       lookAtAll(server_, windowsOf(server_, pid, deadline), Facet::state, deadline))
    if (isMinimized(server_, window.state, deadline)) minimized.insert(window.window);
  return minimized;
}

Subscription X11Accessibility::observeLater(std::function<Subscription()> add) {
  struct Observation {
    Subscription observer;
    bool isOver = false;
  };
  const auto observation = std::make_shared<Observation>();
  errands_.leave([observation, add = std::move(add)] {
    if (observation->isOver) return;
    auto observer = add();
    if (!observation->isOver) observation->observer = std::move(observer);
  });
  return Subscription([observation] {
    observation->isOver = true;
    observation->observer.cancel();
  });
}

}  // namespace pellow
