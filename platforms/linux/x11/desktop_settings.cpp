#include "platforms/linux/x11/desktop_settings.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "platforms/linux/system/file_descriptor.h"
#include "platforms/linux/system/ini_file.h"

namespace pellow {

namespace {

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

std::optional<Pipe> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  return Pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

// Starts a program that reads nothing and writes only to `output`; 0 when it does not start.
pid_t start(const std::vector<std::string>& command, int output) {
  std::vector<char*> arguments;
  for (const auto& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  const int error = posix_spawnp(&pid, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? pid : 0;
}

// Everything up to the end; nothing when that does not come in time.
std::optional<std::string> readAll(int descriptor, Deadline deadline) {
  std::string text;
  for (;;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd poller{descriptor, POLLIN, 0};
    if (left.count() <= 0 || poll(&poller, 1, static_cast<int>(left.count())) <= 0)
      return std::nullopt;
    std::array<char, 512> buffer;
    const auto count = read(descriptor, buffer.data(), buffer.size());
    if (count < 0) return std::nullopt;
    if (count == 0) return text;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

// What a program writes, if it ends well and in time; then nothing of it is left running.
std::optional<std::string> outputOf(const std::vector<std::string>& command, Deadline deadline) {
  auto pipe = makePipe();
  if (!pipe) return std::nullopt;
  const pid_t pid = start(command, pipe->writeEnd.number());
  if (pid == 0) return std::nullopt;
  pipe->writeEnd = FileDescriptor();
  auto text = readAll(pipe->readEnd.number(), deadline);
  if (!text) kill(pid, SIGKILL);
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  const bool isWell = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  return isWell ? text : std::nullopt;
}

// The settings as the daemon lays them out: numbers in the byte order that it states.
class Announcement {
 public:
  explicit Announcement(std::string_view bytes) : bytes_(bytes) {}

  std::optional<std::string> text(std::string_view wanted) {
    constexpr std::size_t header = 12;
    isBigEndian_ = !bytes_.empty() && bytes_[0] == 1;
    at_ = 8;
    const auto count = number(4);
    at_ = header;
    for (std::uint32_t i = 0; i < count && at_ < bytes_.size(); ++i) {
      const auto type = number(1);
      at_ += 1;
      const auto name = padded(number(2));
      at_ += 4;  // the serial number of its last change
      constexpr std::uint32_t integer = 0;
      constexpr std::uint32_t string = 1;
      if (type == string) {
        const auto value = padded(number(4));
        if (name == wanted) return std::string(value);
      } else {
        at_ += type == integer ? 4 : 8;
      }
    }
    return std::nullopt;
  }

 private:
  std::uint32_t number(int size) {
    std::uint32_t value = 0;
    for (int i = 0; i < size; ++i, ++at_) {
      const std::uint32_t byte = at_ < bytes_.size() ? static_cast<unsigned char>(bytes_[at_]) : 0;
      value |= byte << 8 * (isBigEndian_ ? size - 1 - i : i);
    }
    return value;
  }
  // A text of this length, padded to a multiple of four.
  std::string_view padded(std::uint32_t length) {
    const auto text = at_ < bytes_.size() ? bytes_.substr(at_, length) : std::string_view();
    at_ += (std::size_t{length} + 3) / 4 * 4;
    return text;
  }

  std::string_view bytes_;
  std::size_t at_ = 0;
  bool isBigEndian_ = false;
};

}  // namespace

std::optional<std::string> gsettingsText(const std::string& schema, const std::string& key,
                                         Deadline deadline) {
  const auto output = outputOf({"gsettings", "get", schema, key}, deadline);
  if (!output) return std::nullopt;
  const auto quoted = trimmed(*output);
  if (quoted.size() < 2 || quoted.front() != '\'' || quoted.back() != '\'') return std::nullopt;
  return std::string(quoted.substr(1, quoted.size() - 2));
}

std::optional<std::string> announcedText(X11Server& server, std::string_view name,
                                         Deadline deadline) {
  auto& connection = server.connection();
  const auto selectionName = "_XSETTINGS_S" + std::to_string(connection.screenNumber());
  auto pendingSelection = connection.pending<xcb_intern_atom_reply_t>(xcb_intern_atom(
      connection.raw(), 0, static_cast<std::uint16_t>(selectionName.size()), selectionName.data()));
  const auto selection = pendingSelection.collect(deadline);
  if (!selection) return std::nullopt;
  auto pending = connection.pending<xcb_get_selection_owner_reply_t>(
      xcb_get_selection_owner(connection.raw(), (*selection)->atom));
  const auto owner = pending.collect(deadline);
  if (!owner || (*owner)->owner == XCB_WINDOW_NONE) return std::nullopt;
  const auto settings =
      connection.property((*owner)->owner, server.atoms().xsettingsSettings).collect(deadline);
  if (!settings) return std::nullopt;
  return Announcement(settings->bytes).text(name);
}

}  // namespace pellow
