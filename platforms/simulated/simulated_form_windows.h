#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/form_windows.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

class SimulatedFormWindow;

// The form windows of the program.
class SimulatedFormWindows final : public FormWindows {
 public:
  explicit SimulatedFormWindows(SimulatedSystem& system) : system_(system) {}

  std::unique_ptr<FormWindow> makeWindow(std::string name, std::string title) override;

  // The only one of this name, shown or hidden; throws when there is none, or more.
  SimulatedFormWindow& window(std::string_view name) const;

 private:
  friend class SimulatedFormWindow;

  SimulatedSystem& system_;
  std::vector<SimulatedFormWindow*> windows_;
};

}  // namespace pellow::simulated
