#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/symbolic_hot_keys.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

class SymbolicHotKeys final : public pellow::SymbolicHotKeys {
 public:
  explicit SymbolicHotKeys(System& system) : system_(system) {}

  std::vector<SymbolicHotKey> all() const override { return system_.state.symbolicHotKeys; }

  std::optional<std::string> reservedBy(std::uint16_t keyCode,
                                        std::uint64_t modifierFlags) const override {
    const auto& reserved = system_.state.reservedKeys;
    const auto found = reserved.find({keyCode, modifierFlags});
    return found == reserved.end() ? std::nullopt : std::optional(found->second);
  }

  void set(std::vector<SymbolicHotKey> hotKeys) {
    system_.state.symbolicHotKeys = std::move(hotKeys);
  }
  // The desktop acts on these keys, by a feature that may have a name.
  void reserve(std::uint16_t keyCode, std::uint64_t modifierFlags, std::string feature = "") {
    system_.state.reservedKeys[{keyCode, modifierFlags}] = std::move(feature);
  }

 private:
  System& system_;
};

}  // namespace pellow::simulated
