#include "platforms/simulated/probe_windows.h"

#include <utility>

namespace pellow::simulated {
namespace {

class Probe final : public ProbeWindow {
 public:
  Probe(System& system, WindowID window) : system_(system), window_(window) {}

  ~Probe() override {
    if (!system_.state.window(window_)) return;
    system_.change([this](DesktopState& desktop) { desktop.close(window_); });
    system_.giveWay();
  }

  void setContentSize(Size size) override {
    if (!system_.portCall("resizes a probe")) return;
    system_.change([&](DesktopState& desktop) {
      if (auto* const window = desktop.window(window_)) window->frame.size = sizeAround(size);
    });
  }

 private:
  System& system_;
  WindowID window_;
};

}  // namespace

std::unique_ptr<ProbeWindow> ProbeWindows::openWindow(std::string name, std::string title,
                                                      Size contentSize, Colour fill) {
  WindowID window = 0;
  if (system_.portCall("opens {}", name))
    system_.change([&](DesktopState& desktop) {
      window = desktop.open({.pid = system_.ownPid(),
                             .title = std::move(title),
                             .frame = desktop.centred(sizeAround(contentSize)),
                             .fill = fill});
      desktop.activate(system_.ownPid());
    });
  return std::make_unique<Probe>(system_, window);
}

}  // namespace pellow::simulated
