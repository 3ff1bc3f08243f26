#include "platforms/linux/system/log_sink.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "base/unicode.h"
#include "platforms/linux/system/environment.h"
#include "platforms/linux/x11/text_encoding.h"
#include "platforms/posix/file_descriptor.h"

namespace pellow {
namespace {

std::string_view nameOf(LogLevel level) {
  switch (level) {
    case LogLevel::info:
      return "info";
    case LogLevel::standard:
      return "default";
    case LogLevel::warning:
      return "warning";
    case LogLevel::error:
      return "error";
  }
  return "default";
}

// The numbers of syslog.
int priorityOf(LogLevel level) {
  switch (level) {
    case LogLevel::info:
      return 6;
    case LogLevel::standard:
      return 5;
    case LogLevel::warning:
      return 4;
    case LogLevel::error:
      return 3;
  }
  return 5;
}

// The journal says in JOURNAL_STREAM which file it connected standard error to.
bool standardErrorIsJournal() {
  struct stat status{};
  if (fstat(STDERR_FILENO, &status) != 0) return false;
  return environment("JOURNAL_STREAM") == fmt::format("{}:{}", status.st_dev, status.st_ino);
}

// A field of the journal's own protocol; the form with a length holds any text.
std::string journalField(std::string_view name, std::string_view value) {
  if (!value.contains('\n')) return fmt::format("{}={}\n", name, value);
  std::string field = fmt::format("{}\n", name);
  for (int shift = 0; shift < 64; shift += 8)
    field += static_cast<char>(std::uint64_t{value.size()} >> shift & 0xFF);
  field += value;
  return field + '\n';
}

class LogSink {
 public:
  explicit LogSink(const std::filesystem::path& journal) {
    const auto& path = journal.native();
    if (path.size() >= sizeof address_.sun_path || access(path.c_str(), W_OK) != 0) return;
    address_.sun_family = AF_UNIX;
    std::memcpy(address_.sun_path, path.data(), path.size());
    socket_ = FileDescriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    writesLines_ = !socket_ || !standardErrorIsJournal();
  }

  void write(LogLevel level, std::string_view message) const {
    if (writesLines_) writeLine(logLine(level, message) + '\n');
    if (socket_) sendToJournal(level, message);
  }

 private:
  // One call, so that lines of several threads and processes do not mix.
  static void writeLine(std::string_view line) {
    while (::write(STDERR_FILENO, line.data(), line.size()) < 0 && errno == EINTR) {
    }
  }

  // A journal that cannot take the message loses it: standard error has it.
  void sendToJournal(LogLevel level, std::string_view message) const {
    const auto datagram = journalField("MESSAGE", message) +
                          journalField("PRIORITY", std::to_string(priorityOf(level))) +
                          journalField("SYSLOG_IDENTIFIER", "pellow");
    sendto(socket_.number(), datagram.data(), datagram.size(), MSG_NOSIGNAL,
           reinterpret_cast<const sockaddr*>(&address_), sizeof address_);
  }

  FileDescriptor socket_;
  sockaddr_un address_{};
  bool writesLines_ = true;
};

}  // namespace

std::string logLine(LogLevel level, std::string_view message) {
  return fmt::format("{} {}", nameOf(level), oneLine(validUTF8(message)));
}

Log::Sink makeLogSink(const std::filesystem::path& journal) {
  return [sink = std::make_shared<const LogSink>(journal)](
             LogLevel level, std::string_view message) { sink->write(level, message); };
}

}  // namespace pellow
