#pragma once

#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/ax_error.h"
#include "platform/clock.h"
#include "platform/system_error.h"
#include "platforms/linux/x11/x11_atoms.h"

namespace pellow {

struct FreeDeleter {
  void operator()(void* memory) const { std::free(memory); }
};
template <class Reply>
using XReply = std::unique_ptr<Reply, FreeDeleter>;
using XEvent = XReply<xcb_generic_event_t>;

class ServerHold;

// The moment until which something is waited for; for the main loop also the moment at which the
// server falls silent, if that is earlier.
struct Deadline {
  using Clock = std::chrono::steady_clock;

  Clock::time_point end;
  ServerHold* hold = nullptr;
  unsigned unanswered = 0;  // questions, when this deadline was set

  static Deadline max() { return {Clock::time_point::max()}; }
  // Whether the server has let a question of the main loop go unanswered since it was set.
  bool hasMetSilence() const;
  // The same, but after so many seconds at the latest.
  Deadline orIn(Seconds seconds) const;

  auto operator<=>(const Deadline& other) const { return end <=> other.end; }
  bool operator==(const Deadline& other) const { return end == other.end; }
};
Deadline deadlineIn(Seconds seconds);

// How long to wait for the server, and how long where a wrong answer would be worse than a long
// wait: another client may have grabbed the server.
inline constexpr Seconds serverPatience = 2;
inline constexpr Seconds longServerPatience = 30;

// Whether it is over. Until then, every request that waited for it was answered: what many of them
// found together is whole.
bool hasPassed(Deadline deadline);

// What a property holds; empty when the window does not have it.
struct XProperty {
  xcb_atom_t type = XCB_ATOM_NONE;
  std::uint8_t format = 0;  // bits of each value
  std::string bytes;

  bool exists() const { return type != XCB_ATOM_NONE; }
  // The values of a property of 32 bits; nothing of any other.
  std::vector<std::uint32_t> words() const;
  std::optional<std::uint32_t> firstWord() const;
  bool contains(std::uint32_t word) const;
};

// How much of a property is read, in bytes: a client may make its own as large as it likes. The
// rest is ignored; a character may be cut in two.
enum class PropertySize : std::uint32_t {
  usual = 16 << 10,
  windows = 64 << 10,  // a list of them
  icons = 8 << 20,     // in all sizes
};

class X11Connection;

// A request that has been sent and whose reply has not been read yet. Many can be under way at
// once; dropping one drops its reply.
template <class Reply>
class PendingReply {
 public:
  PendingReply(X11Connection& connection, unsigned sequence)
      : connection_(&connection), sequence_(sequence) {}
  PendingReply(PendingReply&& other) noexcept
      : connection_(std::exchange(other.connection_, nullptr)), sequence_(other.sequence_) {}
  PendingReply& operator=(PendingReply&&) = delete;
  ~PendingReply();

  // Waits for the reply; once.
  std::expected<XReply<Reply>, AXError> collect(Deadline deadline);
  // Whether the reply, which nobody wants to collect any more, has come or never will.
  bool hasBeenAnswered();

 private:
  X11Connection* connection_;  // null once collected
  unsigned sequence_;
};

// A property that has been asked for.
class PendingProperty {
 public:
  PendingProperty(X11Connection& connection, xcb_window_t window, xcb_atom_t property,
                  PropertySize most);

  std::expected<XProperty, AXError> collect(Deadline deadline);

 private:
  PendingReply<xcb_get_property_reply_t> reply_;
};

// A connection to the X server for one thread. Errors are values: a window that is gone answers
// `invalidUIElement`, a server that does not answer in time or at all `cannotComplete`, every other
// refusal `failure`.
class X11Connection {
 public:
  static std::expected<std::unique_ptr<X11Connection>, SystemError> open(
      const std::string& displayName);

  // The same, but a connection that cannot be opened is a lost one.
  static std::unique_ptr<X11Connection> openOrLost(const std::string& displayName);

  ~X11Connection();
  X11Connection(const X11Connection&) = delete;
  X11Connection& operator=(const X11Connection&) = delete;

  xcb_connection_t* raw() const { return connection_; }
  xcb_window_t root() const { return screen_.root; }
  int screenNumber() const { return screenNumber_; }
  const xcb_screen_t& screen() const { return screen_; }
  bool isLost() const { return xcb_connection_has_error(connection_) != 0; }
  void flush();

  // Keeps the reply of a request: `connection.pending<xcb_get_geometry_reply_t>(cookie)`.
  template <class Reply, class Cookie>
  PendingReply<Reply> pending(Cookie cookie) {
    return {*this, cookie.sequence};
  }
  PendingProperty property(xcb_window_t window, xcb_atom_t name,
                           PropertySize most = PropertySize::usual) {
    return {*this, window, name, most};
  }

  // Waits for the answer to a checked request.
  std::expected<void, AXError> check(xcb_void_cookie_t cookie, Deadline deadline);

  // Asks the window manager to do something about a window.
  void sendToWindowManager(xcb_window_t window, xcb_atom_t type,
                           const std::array<std::uint32_t, 5>& data);

  // Counts up this eventfd when events arrive while a reply is waited for or requests are sent:
  // they have left the socket, and a main loop that waits for it would miss them.
  void setEventSignal(int eventDescriptor) { eventSignal_ = eventDescriptor; }
  void signalEvent() const;

  // Whether the server answers a question; an easy one.
  bool isAnswered(Deadline deadline);

  // The next event, in order of arrival; nothing when none comes before the deadline.
  XEvent waitForEvent(Deadline deadline);
  // The next event that has arrived already.
  XEvent pollForEvent();
  // Forgets the events that have arrived.
  void dropEvents();

 private:
  template <class Reply>
  friend class PendingReply;

  X11Connection(xcb_connection_t* connection, int screenNumber);

  std::expected<void*, AXError> waitForReply(unsigned sequence, Deadline deadline);
  // Nothing as long as it has not come.
  std::optional<std::expected<void*, AXError>> pollForReply(unsigned sequence);
  bool hasReply(unsigned sequence);
  // Takes in what the server has sent, after waiting for it; false at the deadline or the end.
  bool read(Deadline deadline);
  void keep(xcb_generic_event_t* event);

  xcb_connection_t* connection_;
  int screenNumber_;
  xcb_screen_t screen_{};
  int eventSignal_ = -1;
  std::deque<XEvent> events_;  // have left the socket
};

template <class Reply>
PendingReply<Reply>::~PendingReply() {
  if (connection_) xcb_discard_reply(connection_->raw(), sequence_);
}

template <class Reply>
std::expected<XReply<Reply>, AXError> PendingReply<Reply>::collect(Deadline deadline) {
  auto* connection = std::exchange(connection_, nullptr);
  const auto reply = connection->waitForReply(sequence_, deadline);
  if (!reply) return std::unexpected(reply.error());
  return XReply<Reply>(static_cast<Reply*>(*reply));
}

template <class Reply>
bool PendingReply<Reply>::hasBeenAnswered() {
  if (connection_ && connection_->hasReply(sequence_)) connection_ = nullptr;
  return !connection_;
}

}  // namespace pellow
