#pragma once

#include <expected>

#include "platform/system_error.h"

namespace pellow {

// Whether the system starts this program when the user logs in. Main thread.
class LoginItem {
 public:
  virtual ~LoginItem() = default;

  // As the system has it now, whoever changed it.
  virtual bool isEnabled() const = 0;

  virtual std::expected<void, SystemError> setEnabled(bool enabled) = 0;
};

}  // namespace pellow
