#pragma once

#include <string>

namespace pellow {

// Why the system could not do something, as a sentence for the log.
struct SystemError {
  std::string sentence;

  bool operator==(const SystemError&) const = default;
};

}  // namespace pellow
