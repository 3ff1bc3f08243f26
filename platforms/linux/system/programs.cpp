#include "platforms/linux/system/programs.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/close_range.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include "platforms/linux/system/environment.h"
#include "platforms/linux/system/user_folders.h"
#include "platforms/posix/file_descriptor.h"

namespace pellow {

namespace fs = std::filesystem;

namespace {

struct Launch {
  std::vector<char*> command;
  std::vector<char*> environment;
  std::array<int, 3> streams{-1, -1, -1};  // what takes the place of each; -1 leaves it alone
  int reports = -1;
};

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

std::optional<Pipe> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  return Pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

FileDescriptor openNowhere() { return FileDescriptor(open("/dev/null", O_RDWR | O_CLOEXEC)); }

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
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  std::signal(SIGPIPE, SIG_DFL);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (const int other = launch.streams[static_cast<std::size_t>(stream)]; other >= 0)
      dup2(other, stream);
  close_range(STDERR_FILENO + 1, ~0u, CLOSE_RANGE_CLOEXEC);
  execve(launch.command[0], launch.command.data(), launch.environment.data());
}

// The process in between ends at once, so that the program leaves nothing to wait for.
int launchThroughProcessInBetween(const Launch& launch) {
  const pid_t between = _Fork();
  if (between < 0) return errno;
  if (between == 0) {
    const pid_t program = _Fork();
    if (program == 0) {
      setsid();
      becomeProgram(launch);
    }
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

// Everything up to the end; nothing when that does not come in time.
std::optional<std::string> readAll(const FileDescriptor& pipe,
                                   std::chrono::steady_clock::time_point deadline) {
  std::string text;
  for (;;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd poller{pipe.number(), POLLIN, 0};
    if (left.count() <= 0 || poll(&poller, 1, static_cast<int>(left.count())) <= 0)
      return std::nullopt;
    std::array<char, 512> buffer;
    const auto count = read(pipe.number(), buffer.data(), buffer.size());
    if (count < 0) return std::nullopt;
    if (count == 0) return text;
    text.append(buffer.data(), static_cast<std::size_t>(count));
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
  for (const auto& folder : foldersOfList(environment("PATH"))) {
    const auto file = folder / name;
    if (access(file.c_str(), X_OK) == 0 && fs::is_regular_file(file)) return file;
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
  auto reports = makePipe();
  if (!reports) return std::unexpected(cannotStart(command[0], errno));
  const auto nowhere = output == ProgramOutput::discarded ? openNowhere() : FileDescriptor();
  const int null = nowhere.number();

  auto arguments = command;
  auto all = environmentWith(variables);
  const int failure = launchThroughProcessInBetween({.command = pointersTo(arguments),
                                                     .environment = pointersTo(all),
                                                     .streams = {null, null, null},
                                                     .reports = reports->writeEnd.number()});
  reports->writeEnd = FileDescriptor();
  const int reason = failure != 0 ? failure : failureReportedBy(reports->readEnd);
  if (reason != 0) return std::unexpected(cannotStart(command[0], reason));
  return {};
}

std::optional<std::string> outputOf(const std::vector<std::string>& command,
                                    std::chrono::steady_clock::time_point deadline) {
  const auto program = findProgram(command.front());
  auto output = makePipe();
  if (!program || !output) return std::nullopt;
  const auto nowhere = openNowhere();

  auto arguments = command;
  arguments.front() = *program;
  auto all = environmentWith({});
  const Launch launch{.command = pointersTo(arguments),
                      .environment = pointersTo(all),
                      .streams = {nowhere.number(), output->writeEnd.number(), nowhere.number()}};
  const pid_t pid = _Fork();
  if (pid < 0) return std::nullopt;
  if (pid == 0) {
    becomeProgram(launch);
    _exit(EXIT_FAILURE);
  }
  output->writeEnd = FileDescriptor();
  auto text = readAll(output->readEnd, deadline);
  if (!text) kill(pid, SIGKILL);
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  const bool isWell = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  return isWell ? text : std::nullopt;
}

}  // namespace pellow
