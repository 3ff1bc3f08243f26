#pragma once

#include "platform/symbolic_hot_keys.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

class SymbolicHotKeys final : public pellow::SymbolicHotKeys {
 public:
  explicit SymbolicHotKeys(System& system) : system_(system) {}

  std::vector<SymbolicHotKey> all() const override { return system_.state.symbolicHotKeys; }

 private:
  System& system_;
};

}  // namespace pellow::simulated
