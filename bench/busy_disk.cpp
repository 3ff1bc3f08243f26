#include "bench/busy_disk.h"

#include <chrono>
#include <cstdlib>
#include <thread>

namespace pellow::desktop {
namespace {

// At the lowest priority: three writers could fill the processors of a small machine, but only the
// disk is to be busy.
constexpr int writers = 3;
constexpr auto script =
    "file=$(mktemp \"$0/busy-XXXXXX\") && exec 3<>\"$file\" && rm \"$file\" || exit\n"
    "while nice -n 19 dd if=/dev/zero of=/proc/self/fd/3 bs=1M count=256 conv=fsync status=none; "
    "do :; done";

}  // namespace

BusyDisk::BusyDisk(const std::filesystem::path& folder) {
  const Environment environment{{"PATH", std::getenv("PATH")}};
  for (int writer = 0; writer < writers; ++writer)
    writers_.push_back(std::make_unique<ChildProcess>(
        std::vector<std::string>{"sh", "-c", script, folder.native()}, environment));
  // Until the caches are full, the disk has not noticed.
  std::this_thread::sleep_for(std::chrono::seconds(3));
}

}  // namespace pellow::desktop
