#include "platforms/linux/system/programs.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/close_range.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ranges>
#include <system_error>

#include "platforms/linux/system/file_descriptor.h"

namespace pellow {

namespace fs = std::filesystem;

namespace {

struct Launch {
  std::vector<char*> command;
  std::vector<char*> environment;
  int output = -1;  // where its output goes; -1 leaves it alone
  int reports = -1;
};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (auto& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> environmentNow() {
  std::vector<std::string> all;
  for (char** entry = environ; *entry; ++entry) all.emplace_back(*entry);
  return all;
}

std::optional<std::vector<std::string>> givenEnvironment;

std::vector<std::string> environmentWith(const std::vector<std::string>& variables) {
  auto all = givenEnvironment ? *givenEnvironment : environmentNow();
  std::erase_if(all, [&](std::string_view entry) {
    const auto name = entry.substr(0, entry.find('=') + 1);
    return std::ranges::any_of(variables,
                               [&](const auto& variable) { return variable.starts_with(name); });
  });
  all.insert(all.end(), variables.begin(), variables.end());
  return all;
}

void report(int pipe) {
  const int reason = errno;
  if (write(pipe, &reason, sizeof reason) != sizeof reason) _exit(126);
}

// Until the new program runs, other threads' locks may stay held for ever: only calls that are
// allowed in a signal handler.
void becomeProgram(const Launch& launch) {
  setsid();
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  std::signal(SIGPIPE, SIG_DFL);
  if (launch.output >= 0) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
      dup2(launch.output, stream);
  }
  close_range(STDERR_FILENO + 1, ~0u, CLOSE_RANGE_CLOEXEC);
  execve(launch.command[0], launch.command.data(), launch.environment.data());
}

// The process in between ends at once, so that the program leaves nothing to wait for.
int launchThroughProcessInBetween(const Launch& launch) {
  const pid_t between = _Fork();
  if (between < 0) return errno;
  if (between == 0) {
    const pid_t program = _Fork();
    if (program == 0) becomeProgram(launch);
    if (program <= 0) report(launch.reports);
    _exit(EXIT_SUCCESS);
  }
  while (waitpid(between, nullptr, 0) < 0 && errno == EINTR) {
  }
  return 0;
}

// The pipe closes by itself when a program has replaced its last writer.
int failureReportedBy(const FileDescriptor& pipe) {
  int reason = 0;
  for (;;) {
    const auto count = read(pipe.number(), &reason, sizeof reason);
    if (count < 0 && errno == EINTR) continue;
    return count == sizeof reason ? reason : 0;
  }
}

SystemError cannotStart(const std::string& program, int reason) {
  return {fmt::format("Could not start {}: {}.", program, std::generic_category().message(reason))};
}

}  // namespace

GivenEnvironment::GivenEnvironment() {
  auto all = environmentNow();
  std::erase_if(all, [](const std::string& entry) {
    return entry.starts_with("DESKTOP_STARTUP_ID=") || entry.starts_with("XDG_ACTIVATION_TOKEN=");
  });
  givenEnvironment = std::move(all);
}
GivenEnvironment::~GivenEnvironment() { givenEnvironment.reset(); }

std::optional<fs::path> findProgram(std::string_view name) {
  const char* const path = std::getenv("PATH");
  for (const auto part : std::views::split(std::string_view(path ? path : ""), ':')) {
    const auto file = fs::path(std::string_view(part)) / name;
    if (file.is_absolute() && access(file.c_str(), X_OK) == 0 && fs::is_regular_file(file))
      return file;
  }
  return std::nullopt;
}

fs::path ownExecutable() {
  constexpr std::string_view replaced = " (deleted)";  // the kernel's own word
  std::error_code error;
  const auto file = fs::read_symlink("/proc/self/exe", error);
  const auto& name = file.native();
  if (!name.ends_with(replaced) || fs::exists(file, error)) return file;
  return name.substr(0, name.size() - replaced.size());
}

std::expected<void, SystemError> startProgram(const std::vector<std::string>& command,
                                              ProgramOutput output,
                                              const std::vector<std::string>& variables) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return std::unexpected(cannotStart(command[0], errno));
  const FileDescriptor reader(ends[0]);
  FileDescriptor writer(ends[1]);
  const FileDescriptor nowhere(
      output == ProgramOutput::discarded ? open("/dev/null", O_RDWR | O_CLOEXEC) : -1);

  auto arguments = command;
  auto environment = environmentWith(variables);
  const int failure = launchThroughProcessInBetween({.command = pointersTo(arguments),
                                                     .environment = pointersTo(environment),
                                                     .output = nowhere.number(),
                                                     .reports = writer.number()});
  writer = FileDescriptor();
  const int reason = failure != 0 ? failure : failureReportedBy(reader);
  if (reason != 0) return std::unexpected(cannotStart(command[0], reason));
  return {};
}

}  // namespace pellow
