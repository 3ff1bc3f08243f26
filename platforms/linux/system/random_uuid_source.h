#pragma once

#include "platform/uuid_source.h"

namespace pellow {

// Version 4 UUIDs from the kernel's random numbers.
class RandomUUIDSource final : public UUIDSource {
 public:
  UUID next() override;
};

}  // namespace pellow
