#include "platforms/simulated/login_item.h"

#include <utility>

namespace pellow::simulated {

std::expected<void, SystemError> LoginItem::setEnabled(bool enabled) {
  if (!system_.portCall("{} the login item", enabled ? "registers" : "unregisters")) return {};
  if (auto fault = std::exchange(system_.state.loginItemFault, std::nullopt))
    return std::unexpected(std::move(*fault));
  system_.state.startsAtLogin = enabled;
  return {};
}

}  // namespace pellow::simulated
