#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "tests/harness/child_process.h"

namespace pellow::desktop {

// Keeps the disk of a folder busy for its lifetime by writing and syncing large files there. They
// have no names, so nothing is left of them whatever happens.
class BusyDisk {
 public:
  explicit BusyDisk(const std::filesystem::path& folder);

 private:
  std::vector<std::unique_ptr<ChildProcess>> writers_;
};

}  // namespace pellow::desktop
