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

  bool isReserved(std::uint16_t keyCode, std::uint64_t modifierFlags) const override {
    return system_.state.reservedKeys.contains({keyCode, modifierFlags});
  }

  void set(std::vector<SymbolicHotKey> hotKeys) {
    system_.state.symbolicHotKeys = std::move(hotKeys);
  }
  // The desktop acts on these keys and does not say so.
  void reserve(std::uint16_t keyCode, std::uint64_t modifierFlags) {
    system_.state.reservedKeys.emplace(keyCode, modifierFlags);
  }

 private:
  System& system_;
};

}  // namespace pellow::simulated
