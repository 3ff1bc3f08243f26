#pragma once

#include "platform/status_bar.h"

namespace pellow {

// Status items in the system's menu bar.
class MacStatusBar final : public StatusBar {
 public:
  std::unique_ptr<StatusItem> makeStatusItem() override;

 private:
  class MacStatusItem;
};

}  // namespace pellow
