#include "platforms/linux/x11/errands.h"

#include <sys/eventfd.h>

#include <utility>

namespace pellow {

void Errands::leave(std::function<void()> errand) {
  {
    const std::lock_guard lock(mutex_);
    errands_.push_back(std::move(errand));
  }
  eventfd_write(wakeUp_, 1);
}

void Errands::run() {
  std::vector<std::function<void()>> errands;
  {
    const std::lock_guard lock(mutex_);
    errands.swap(errands_);
  }
  for (const auto& errand : errands) errand();
}

}  // namespace pellow
