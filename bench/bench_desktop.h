#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "tests/harness/child_process.h"

namespace pellow::desktop {

using Options = std::set<std::string_view>;

// The arguments of the program; throws at one that it does not know.
inline Options readOptions(int argc, char** argv, const Options& known) {
  Options options;
  for (const std::string_view argument :
       std::span(argv, static_cast<std::size_t>(argc)).subspan(1)) {
    if (!known.contains(argument)) throw std::runtime_error("unknown: " + std::string(argument));
    options.insert(argument);
  }
  return options;
}

// A session folder in memory, as desktops have.
class SessionInMemory {
 public:
  SessionInMemory() {
    std::string pattern = "/dev/shm/pellow-bench-XXXXXX";
    if (!mkdtemp(pattern.data())) throw std::runtime_error("there is no /dev/shm");
    folder_ = pattern;
  }
  ~SessionInMemory() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  SessionInMemory(const SessionInMemory&) = delete;
  SessionInMemory& operator=(const SessionInMemory&) = delete;

  Environment environment() const { return {{"XDG_RUNTIME_DIR", folder_}}; }

 private:
  std::filesystem::path folder_;
};

// Of a process since its start, in milliseconds; threads that have ended are left out.
inline double processorTime(const ChildProcess& process) {
  double nanoseconds = 0;
  const auto threads = std::filesystem::path("/proc") / std::to_string(process.pid()) / "task";
  for (const auto& thread : std::filesystem::directory_iterator(threads)) {
    double ofThread = 0;
    std::ifstream(thread.path() / "schedstat") >> ofThread;
    nanoseconds += ofThread;
  }
  return nanoseconds / 1e6;
}

// As on a desktop that has no such folder.
inline Environment withoutSession() { return {{"XDG_RUNTIME_DIR", ""}}; }

}  // namespace pellow::desktop
