#pragma once

#include "platform/uuid_source.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

// UUIDs that look random and are the same in every history; a desktop makes none twice, not even
// after a crash.
class UUIDSource final : public pellow::UUIDSource {
 public:
  explicit UUIDSource(System& system) : system_(system) {}

  UUID next() override;

 private:
  System& system_;
};

}  // namespace pellow::simulated
