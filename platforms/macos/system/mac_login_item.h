#pragma once

#include "platform/login_item.h"

namespace pellow {

// The application as one of the login items that System Settings lists.
class MacLoginItem final : public LoginItem {
 public:
  bool isEnabled() const override;
  std::expected<void, SystemError> setEnabled(bool enabled) override;
};

}  // namespace pellow
