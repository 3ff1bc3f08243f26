#include "platforms/linux/accessibility_bus/accessibility_bus.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <ranges>
#include <string_view>
#include <utility>

#include "platforms/posix/file_descriptor.h"

namespace pellow {

namespace {

constexpr auto accessible = "org.a11y.atspi.Accessible";
constexpr auto component = "org.a11y.atspi.Component";

// Microseconds.
std::uint64_t timeUntil(AccessibilityBus::Deadline deadline) {
  const auto left =
      std::chrono::ceil<std::chrono::microseconds>(deadline - std::chrono::steady_clock::now());
  return static_cast<std::uint64_t>(std::max<std::int64_t>(left.count(), 0));
}

int noArguments(sd_bus_message*) { return 0; }

bool readNumber(sd_bus_message* message, std::uint32_t& number) {
  return sd_bus_message_read(message, "u", &number) > 0;
}

// An application may say any number: what no X screen can hold is cut off, so that sums stay sums.
bool readRect(sd_bus_message* message, AccessibleRect& rect) {
  constexpr int most = std::numeric_limits<std::int16_t>::max();
  if (sd_bus_message_read(message, "(iiii)", &rect.x, &rect.y, &rect.width, &rect.height) <= 0)
    return false;
  for (auto* number : {&rect.x, &rect.y, &rect.width, &rect.height})
    *number = std::clamp(*number, -most, most);
  return true;
}

bool readObjects(sd_bus_message* message, std::vector<AccessibleObject>& objects) {
  if (sd_bus_message_enter_container(message, 'a', "(so)") <= 0) return false;
  const char* application = nullptr;
  const char* path = nullptr;
  int read = 0;
  while ((read = sd_bus_message_read(message, "(so)", &application, &path)) > 0)
    objects.push_back({application, path});
  return read == 0;
}

// A value of an address, in which "%2f" stands for a slash; nothing when it is broken.
std::optional<std::string> unescaped(std::string_view value) {
  constexpr std::string_view digits = "0123456789abcdef0123456789ABCDEF";
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] != '%') {
      text += value[i];
      continue;
    }
    if (value.size() - i < 3) return std::nullopt;
    const auto high = digits.find(value[++i]);
    const auto low = digits.find(value[++i]);
    if (high == digits.npos || low == digits.npos) return std::nullopt;
    text += static_cast<char>(high % 16 * 16 + low % 16);
  }
  return text;
}

bool isOwnSocketFile(const char* path) {
  struct stat status{};
  return stat(path, &status) == 0 && S_ISSOCK(status.st_mode) && status.st_uid == geteuid();
}

struct SocketAddress {
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  socklen_t size = 0;
};

// The socket of an address that names one and says nothing else: an address of the bus's own kind
// may list several, and some start a program.
std::optional<SocketAddress> socketAddress(std::string_view address) {
  constexpr std::string_view transport = "unix:";
  if (!address.starts_with(transport) || address.contains(';')) return std::nullopt;
  std::optional<std::string> name;  // an abstract one begins with a zero byte
  for (const auto part : std::views::split(address.substr(transport.size()), ',')) {
    const std::string_view pair(part);
    const auto key = pair.substr(0, pair.find('='));
    if (key == "guid") continue;
    if (name || (key != "path" && key != "abstract") || key.size() == pair.size())
      return std::nullopt;
    const auto value = unescaped(pair.substr(key.size() + 1));
    if (!value || value->empty() || value->contains('\0')) return std::nullopt;
    name = key == "path" ? *value : '\0' + *value;
  }
  SocketAddress result;
  if (!name || name->size() >= sizeof result.address.sun_path) return std::nullopt;
  if (name->front() != '\0' && !isOwnSocketFile(name->c_str())) return std::nullopt;
  std::ranges::copy(*name, result.address.sun_path);
  result.size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name->size());
  return result;
}

// A connection to a program of this user; none to anybody else's.
FileDescriptor connectTo(const SocketAddress& to) {
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket ||
      connect(socket.number(), reinterpret_cast<const sockaddr*>(&to.address), to.size) != 0)
    return FileDescriptor();
  ucred peer{};
  socklen_t size = sizeof peer;
  const bool isOwn = getsockopt(socket.number(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
                     peer.uid == geteuid();
  return isOwn ? std::move(socket) : FileDescriptor();
}

}  // namespace

void AccessibilityBus::Closer::operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
void AccessibilityBus::Releaser::operator()(sd_bus_message* message) const {
  sd_bus_message_unref(message);
}

std::unique_ptr<AccessibilityBus> AccessibilityBus::open(const std::string& address,
                                                         Deadline deadline) {
  const auto where = socketAddress(address);
  if (!where) return nullptr;
  auto socket = connectTo(*where);
  if (!socket) return nullptr;
  sd_bus* raw = nullptr;
  if (sd_bus_new(&raw) < 0) return nullptr;
  Bus bus(raw);
  if (sd_bus_set_fd(raw, socket.number(), socket.number()) < 0) return nullptr;
  (void)socket.release();  // the bus closes it
  if (sd_bus_set_bus_client(raw, 1) < 0 || sd_bus_start(raw) < 0) return nullptr;
  std::unique_ptr<AccessibilityBus> result(new AccessibilityBus(std::move(bus), deadline));
  return result->becomeReady() ? std::move(result) : nullptr;
}

bool AccessibilityBus::becomeReady() {
  for (;;) {
    const int ready = sd_bus_is_ready(bus_.get());
    if (ready != 0) return ready > 0;
    if (!proceed()) return false;
  }
}

bool AccessibilityBus::proceed() {
  const auto left = timeUntil(deadline_);
  if (left == 0) return false;
  const int processed = sd_bus_process(bus_.get(), nullptr);
  if (processed != 0) return processed > 0;
  const int waited = sd_bus_wait(bus_.get(), left);
  return waited >= 0 || waited == -EINTR;
}

AccessibilityBus::Message AccessibilityBus::question(const AccessibleObject& to,
                                                     const char* interface, const char* member,
                                                     const AddArguments& addArguments) const {
  sd_bus_message* raw = nullptr;
  if (sd_bus_message_new_method_call(bus_.get(), &raw, to.application.c_str(), to.path.c_str(),
                                     interface, member) < 0)
    return nullptr;
  Message message(raw);
  return addArguments(raw) < 0 ? nullptr : std::move(message);
}

std::optional<AccessibilityBus::Messages> AccessibilityBus::ask(const Messages& questions) {
  struct Pending {
    std::unique_ptr<sd_bus_slot, decltype(&sd_bus_slot_unref)> slot{nullptr, sd_bus_slot_unref};
    Message reply;
  };
  const auto keep = [](sd_bus_message* reply, void* pending, sd_bus_error*) {
    static_cast<Pending*>(pending)->reply.reset(sd_bus_message_ref(reply));
    return 0;
  };
  std::vector<Pending> pending(questions.size());
  for (std::size_t i = 0; i < questions.size(); ++i) {
    sd_bus_slot* slot = nullptr;
    if (!questions[i] ||
        sd_bus_call_async(bus_.get(), &slot, questions[i].get(), keep, &pending[i], UINT64_MAX) < 0)
      return std::nullopt;
    pending[i].slot.reset(slot);
  }
  Messages replies;
  for (auto& each : pending) {
    while (!each.reply)
      if (!proceed()) return std::nullopt;
    replies.push_back(std::move(each.reply));
  }
  return replies;
}

template <class Value>
AccessibilityBus::Answers<Value> AccessibilityBus::askEach(
    const std::vector<AccessibleObject>& objects, const char* interface, const char* member,
    const AddArguments& addArguments, bool (*read)(sd_bus_message*, Value&)) {
  Messages questions;
  for (const auto& object : objects)
    questions.push_back(question(object, interface, member, addArguments));
  const auto replies = ask(questions);
  if (!replies) return std::nullopt;
  std::vector<std::optional<Value>> answers;
  for (const auto& reply : *replies) {
    Value value{};
    const bool isWell =
        !sd_bus_message_is_method_error(reply.get(), nullptr) && read(reply.get(), value);
    answers.push_back(isWell ? std::optional(std::move(value)) : std::nullopt);
  }
  return answers;
}

std::optional<AccessibleObject> AccessibilityBus::application(int pid) {
  const AccessibleObject registry{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
  const auto found = children({registry});
  if (!found || !found->front()) return std::nullopt;
  const auto& applications = *found->front();
  // The bus itself answers these: an application that hangs delays only itself.
  Messages questions;
  for (const auto& application : applications)
    questions.push_back(
        question({"org.freedesktop.DBus", "/org/freedesktop/DBus"}, "org.freedesktop.DBus",
                 "GetConnectionUnixProcessID", [&](sd_bus_message* message) {
                   return sd_bus_message_append(message, "s", application.application.c_str());
                 }));
  const auto replies = ask(questions);
  if (!replies) return std::nullopt;
  for (std::size_t i = 0; i < applications.size(); ++i) {
    std::uint32_t owner = 0;
    if (readNumber((*replies)[i].get(), owner) && std::cmp_equal(owner, pid))
      return applications[i];
  }
  return std::nullopt;
}

AccessibilityBus::Answers<std::vector<AccessibleObject>> AccessibilityBus::children(
    const std::vector<AccessibleObject>& objects) {
  return askEach<std::vector<AccessibleObject>>(objects, accessible, "GetChildren", noArguments,
                                                readObjects);
}

AccessibilityBus::Answers<std::uint32_t> AccessibilityBus::roles(
    const std::vector<AccessibleObject>& objects) {
  return askEach<std::uint32_t>(objects, accessible, "GetRole", noArguments, readNumber);
}

AccessibilityBus::Answers<AccessibleRect> AccessibilityBus::extents(
    const std::vector<AccessibleObject>& objects, std::uint32_t origin) {
  return askEach<AccessibleRect>(
      objects, component, "GetExtents",
      [&](sd_bus_message* message) { return sd_bus_message_append(message, "u", origin); },
      readRect);
}

AccessibilityBus::Answers<AccessibleRect> AccessibilityBus::onScreen(
    const std::vector<AccessibleObject>& objects) {
  return extents(objects, 0);
}

AccessibilityBus::Answers<AccessibleRect> AccessibilityBus::inWindow(
    const std::vector<AccessibleObject>& objects) {
  return extents(objects, 1);
}

}  // namespace pellow
