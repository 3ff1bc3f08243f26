#pragma once

#include "platform/uuid_source.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

// UUIDs that look random and are the same in every history; a desktop makes none twice, not even
// after a crash.
class SimulatedUUIDSource final : public UUIDSource {
 public:
  explicit SimulatedUUIDSource(SimulatedSystem& system) : system_(system) {}

  UUID next() override;

 private:
  SimulatedSystem& system_;
};

}  // namespace pellow::simulated
