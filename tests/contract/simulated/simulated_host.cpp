#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platforms/simulated/desktop.h"
#include "platforms/simulated/form_window.h"
#include "tests/contract/host.h"

namespace pellow::contract {
namespace {

class SimulatedGuest final : public Guest {
 public:
  explicit SimulatedGuest(simulated::Application application)
      : application_(std::move(application)) {}
  ~SimulatedGuest() override { application_.quit(); }

  ProcessID pid() const override { return application_.pid(); }
  void open(const std::string& title, const QuartzRect& frame) override {
    application_.openWindow(title, frame);
  }
  void close(const std::string& title) override { window(title).close(); }
  void minimize(const std::string& title) override { window(title).minimize(); }

  QuartzRect frame(const std::string& title) const override { return window(title).frame(); }
  bool isMinimized(const std::string& title) const override { return window(title).isMinimized(); }
  bool isShown(const std::string& title) const override { return window(title).isVisible(); }

 private:
  simulated::Window window(const std::string& title) const {
    const auto all = application_.windows();
    const auto found = std::ranges::find(all, title, &simulated::Window::title);
    if (found == all.end()) throw std::out_of_range("no window " + title);
    return *found;
  }

  simulated::Application application_;
};

class SimulatedHost final : public Host {
 public:
  Platform& platform() override { return desktop_; }
  bool letsUsAct() override { return true; }

  bool until(const std::function<bool()>& holds) override {
    constexpr int steps = 3000;
    constexpr Seconds step = 0.01;
    for (int count = 0; count < steps && !holds(); ++count) desktop_.run(step);
    return holds();
  }

  std::unique_ptr<Guest> launch(const std::string& name) override {
    return std::make_unique<SimulatedGuest>(desktop_.launch(name));
  }

  bool showsPanel(const std::string& name) override {
    return !desktop_.panels().visible(name).empty();
  }

  void type(std::uint16_t keyCode, std::uint64_t modifierFlags) override {
    desktop_.keyboard().press(keyCode, modifierFlags, keyCode == key::t ? "t" : "k");
  }
  void hold(std::uint16_t keyCode) override { type(keyCode, 0); }
  void movePointer(QuartzPoint to) override {
    desktop_.pointer().move(desktop_.state().toAppKit(to));
  }
  // Events come one after the other, so the button goes down where the pointer is by then.
  void pressButton() override { desktop_.pointer().pressHere(); }
  void releaseButton() override { desktop_.pointer().release(); }

  void operate(const std::string& title) override {
    if (!desktop_.alerts().showing().empty()) return desktop_.alerts().choose(title);
    auto& window = desktop_.formWindows().window("pellow-settings");
    try {
      window.toggle(title);
    } catch (const std::out_of_range&) {
      window.press(title);
    }
  }
  void closeWindow(const std::string&) override {
    desktop_.formWindows().window("pellow-settings").close();
  }
  void pickColour(Colour colour) override { desktop_.colourPanel().pick(colour); }

  void chooseFromStatusMenu(const std::string& title) override {
    desktop_.statusBar().openMenu();
    choose(title);
  }
  void chooseFromContextMenu(QuartzPoint at, const std::string& title) override {
    const auto point = desktop_.state().toAppKit(at);
    desktop_.pointer().secondaryClick(point);
    until([&] { return desktop_.menu().isOpen(); });
    desktop_.pointer().move(point + AppKitVector{50, -10});  // to the item
    choose(title);
  }

  void send(TerminationSignal signal) override { desktop_.process().receive(signal); }

 private:
  void choose(const std::string& title) {
    until([&] { return desktop_.menu().isOpen(); });
    desktop_.menu().choose({title});
  }

  simulated::Desktop desktop_;
};

}  // namespace

std::unique_ptr<Host> Host::make() { return std::make_unique<SimulatedHost>(); }

}  // namespace pellow::contract
