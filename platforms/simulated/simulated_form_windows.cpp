#include "platforms/simulated/simulated_form_windows.h"

#include <stdexcept>
#include <utility>

#include "platforms/simulated/simulated_form_window.h"

namespace pellow::simulated {

std::unique_ptr<FormWindow> SimulatedFormWindows::makeWindow(std::string name, std::string title) {
  return std::make_unique<SimulatedFormWindow>(*this, std::move(name), std::move(title));
}

SimulatedFormWindow& SimulatedFormWindows::window(std::string_view name) const {
  SimulatedFormWindow* found = nullptr;
  if (system_.processRuns())
    for (auto* each : windows_) {
      if (each->name() != name) continue;
      if (found) throw std::out_of_range(fmt::format("several windows \"{}\"", name));
      found = each;
    }
  if (!found) throw std::out_of_range(fmt::format("no window \"{}\"", name));
  return *found;
}

}  // namespace pellow::simulated
