#pragma once

#include <chrono>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system_error.h"

namespace pellow {

// The program that a shell would start by this name; nothing when PATH has none.
std::optional<std::filesystem::path> findProgram(std::string_view name);

// The file that this process runs, or, after an upgrade, the one that stands in its place.
std::filesystem::path ownExecutable();

enum class ProgramOutput { shared, discarded };

// While it lives, programs get the environment that the process had when it was made, without what
// is for one program only, such as the token of its start. One at a time, made before there are
// other threads.
class GivenEnvironment {
 public:
  GivenEnvironment();
  ~GivenEnvironment();
  GivenEnvironment(const GivenEnvironment&) = delete;
  GivenEnvironment& operator=(const GivenEnvironment&) = delete;
};

// Starts a program that lives on by itself, in a session of its own and with nothing of this
// process but its environment, to which `variables` ("NAME=value") are added. `command` begins with
// the path of the program. Answers once the program runs. Any thread.
std::expected<void, SystemError> startProgram(const std::vector<std::string>& command,
                                              ProgramOutput output,
                                              const std::vector<std::string>& variables = {});

// What a program, named as for a shell, writes if it ends well and in time; then nothing of it is
// left running. It reads nothing, and its errors are discarded. Any thread.
std::optional<std::string> outputOf(const std::vector<std::string>& command,
                                    std::chrono::steady_clock::time_point deadline);

}  // namespace pellow
