#include "platforms/linux/system/environment.h"

#include <cstdlib>

namespace pellow {

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

}  // namespace pellow
