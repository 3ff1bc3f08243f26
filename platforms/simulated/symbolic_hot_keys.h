#pragma once

#include <utility>
#include <vector>

#include "platform/symbolic_hot_keys.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

class SymbolicHotKeys final : public pellow::SymbolicHotKeys {
 public:
  explicit SymbolicHotKeys(System& system) : system_(system) {}

  std::vector<SymbolicHotKey> all() const override { return system_.state.symbolicHotKeys; }

  void set(std::vector<SymbolicHotKey> hotKeys) {
    system_.state.symbolicHotKeys = std::move(hotKeys);
  }

 private:
  System& system_;
};

}  // namespace pellow::simulated
