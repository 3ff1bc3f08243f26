#pragma once

#include "platform/uuid_source.h"

namespace pellow {

// Version 4 UUIDs of the system.
class MacUUIDSource final : public UUIDSource {
 public:
  UUID next() override;
};

}  // namespace pellow
