#include "ui/relauncher.h"

#include <utility>

namespace pellow {

// Each new process waits for this one: a second would only find the first in its place.
void Relauncher::relaunch() {
  if (std::exchange(isUnderWay_, true)) return;
  process_.launchNewInstance([this](const std::expected<void, SystemError>& launched) {
    if (launched) return process_.terminate();
    isUnderWay_ = false;
    log_.error("Relaunch failed: {}", launched.error().sentence);
  });
}

}  // namespace pellow
