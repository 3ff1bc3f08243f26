#pragma once

#include "platform/symbolic_hot_keys.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

class SimulatedSymbolicHotKeys final : public SymbolicHotKeys {
 public:
  explicit SimulatedSymbolicHotKeys(SimulatedSystem& system) : system_(system) {}

  std::vector<SymbolicHotKey> all() const override { return system_.state.symbolicHotKeys; }

 private:
  SimulatedSystem& system_;
};

}  // namespace pellow::simulated
