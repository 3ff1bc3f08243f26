#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/form_windows.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

class FormWindow;

// The form windows of the program.
class FormWindows final : public pellow::FormWindows {
 public:
  explicit FormWindows(System& system) : system_(system) {}

  std::unique_ptr<pellow::FormWindow> makeWindow(std::string name, std::string title) override;

  // The only one of this name, shown or hidden; throws when there is none, or more.
  FormWindow& window(std::string_view name) const;

 private:
  friend class FormWindow;

  System& system_;
  std::vector<FormWindow*> windows_;
};

}  // namespace pellow::simulated
