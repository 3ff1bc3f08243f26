#pragma once

#include <memory>

#include "platform/form_windows.h"

namespace pellow {

class Foreground;

// Forms as windows with tabs. Installs the main menu that their keys need.
class MacFormWindows final : public FormWindows {
 public:
  explicit MacFormWindows(std::shared_ptr<Foreground> foreground);

  std::unique_ptr<FormWindow> makeWindow(std::string name, std::string title) override;

 private:
  std::shared_ptr<Foreground> foreground_;
};

}  // namespace pellow
