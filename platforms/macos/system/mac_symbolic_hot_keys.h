#pragma once

#include "platform/symbolic_hot_keys.h"

namespace pellow {

// The preferences of the system's keyboard shortcuts. A shortcut that nobody ever changed may be
// absent there.
class MacSymbolicHotKeys final : public SymbolicHotKeys {
 public:
  std::vector<SymbolicHotKey> all() const override;
  // Nobody can be asked.
  std::optional<std::string> reservedBy(std::uint16_t, std::uint64_t) const override {
    return std::nullopt;
  }
};

}  // namespace pellow
