#include "platforms/simulated/form_windows.h"

#include <stdexcept>
#include <utility>

#include "platforms/simulated/form_window.h"

namespace pellow::simulated {

std::unique_ptr<pellow::FormWindow> FormWindows::makeWindow(std::string name, std::string title) {
  return std::make_unique<FormWindow>(*this, std::move(name), std::move(title));
}

FormWindow& FormWindows::window(std::string_view name) const {
  FormWindow* found = nullptr;
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
