#pragma once

#include "base/uuid.h"

namespace pellow {

// Where new identities come from. Main thread.
class UUIDSource {
 public:
  virtual ~UUIDSource() = default;

  // A random UUID that no other call returns.
  virtual UUID next() = 0;
};

}  // namespace pellow
