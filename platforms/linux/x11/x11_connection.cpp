#include "platforms/linux/x11/x11_connection.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fmt/format.h>

#include "platforms/linux/x11/server_hold.h"

namespace pellow {

using std::chrono::steady_clock;

Deadline deadlineIn(Seconds seconds) {
  return {steady_clock::now() +
          std::chrono::duration_cast<steady_clock::duration>(
              std::chrono::duration<double>(std::clamp(seconds, 0.0, 3600.0)))};
}

Deadline Deadline::orIn(Seconds seconds) const {
  auto earlier = *this;
  earlier.end = std::min(end, deadlineIn(seconds).end);
  return earlier;
}

bool Deadline::hasMetSilence() const { return hold && hold->unanswered() != unanswered; }

bool hasPassed(Deadline deadline) {
  return deadline.hasMetSilence() || steady_clock::now() >= deadline.end;
}

std::vector<std::uint32_t> XProperty::words() const {
  if (format != 32) return {};
  std::vector<std::uint32_t> words(bytes.size() / sizeof(std::uint32_t));
  if (!words.empty()) std::memcpy(words.data(), bytes.data(), words.size() * sizeof(std::uint32_t));
  return words;
}

std::optional<std::uint32_t> XProperty::firstWord() const {
  std::uint32_t word = 0;
  if (format != 32 || bytes.size() < sizeof word) return std::nullopt;
  std::memcpy(&word, bytes.data(), sizeof word);
  return word;
}

bool XProperty::contains(std::uint32_t word) const {
  const auto all = words();
  return std::ranges::find(all, word) != all.end();
}

namespace {

AXError axError(const xcb_generic_error_t& error) {
  const bool gone = error.error_code == XCB_WINDOW || error.error_code == XCB_DRAWABLE;
  return gone ? AXError::invalidUIElement : AXError::failure;
}

SystemError cannotOpen(const std::string& displayName) {
  if (displayName.empty() && !std::getenv("DISPLAY"))
    return {"There is no X display (DISPLAY is not set); start Pellow inside an X11 session."};
  const std::string name = displayName.empty() ? std::getenv("DISPLAY") : displayName;
  return {
      fmt::format("The X display \"{}\" cannot be opened; set DISPLAY to a running X server "
                  "that this user may use.",
                  name)};
}

}  // namespace

std::expected<std::unique_ptr<X11Connection>, SystemError> X11Connection::open(
    const std::string& displayName) {
  auto connection = openOrLost(displayName);
  if (connection->isLost()) return std::unexpected(cannotOpen(displayName));
  return connection;
}

std::unique_ptr<X11Connection> X11Connection::openOrLost(const std::string& displayName) {
  int screenNumber = 0;
  auto* connection =
      xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), &screenNumber);
  return std::unique_ptr<X11Connection>(new X11Connection(connection, screenNumber));
}

X11Connection::X11Connection(xcb_connection_t* connection, int screenNumber)
    : connection_(connection), screenNumber_(screenNumber) {
  if (isLost()) return;
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (int i = 0; i < screenNumber; ++i) xcb_screen_next(&screens);
  screen_ = *screens.data;
}

X11Connection::~X11Connection() { xcb_disconnect(connection_); }

// The library reads while it writes, whatever there is to read.
void X11Connection::flush() {
  xcb_flush(connection_);
  while (auto* event = xcb_poll_for_queued_event(connection_)) keep(event);
}

void X11Connection::signalEvent() const { eventfd_write(eventSignal_, 1); }

void X11Connection::keep(xcb_generic_event_t* event) {
  events_.emplace_back(event);
  if (eventSignal_ >= 0)
    signalEvent();
  else if (constexpr std::size_t most = 10'000; events_.size() > most)
    events_.pop_front();  // nobody waits for them: errors about windows that are gone
}

bool X11Connection::isAnswered(Deadline deadline) {
  auto question = pending<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection_));
  return question.collect(deadline).has_value();
}

std::expected<void, AXError> X11Connection::check(xcb_void_cookie_t cookie, Deadline deadline) {
  // A reply to a later request tells that the checked one has been handled.
  if (!isAnswered(deadline)) return std::unexpected(AXError::cannotComplete);
  const XReply<xcb_generic_error_t> error(xcb_request_check(connection_, cookie));
  if (error) return std::unexpected(axError(*error));
  return {};
}

void X11Connection::sendToWindowManager(xcb_window_t window, xcb_atom_t type,
                                        const std::array<std::uint32_t, 5>& data) {
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = window;
  message.type = type;
  std::ranges::copy(data, message.data.data32);
  xcb_send_event(connection_, 0, root(),
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 reinterpret_cast<const char*>(&message));
}

std::expected<void*, AXError> X11Connection::waitForReply(unsigned sequence, Deadline deadline) {
  auto* const hold = deadline.hold;
  if (!hold || !hold->isOn()) {
    flush();
    const Deadline end = hold ? deadline.orIn(ServerHold::patience) : deadline;
    do {
      if (const auto answer = pollForReply(sequence)) return *answer;
    } while (read(end));
  }
  xcb_discard_reply(connection_, sequence);
  if (hold) hold->noteUnanswered();
  return std::unexpected(AXError::cannotComplete);
}

std::optional<std::expected<void*, AXError>> X11Connection::pollForReply(unsigned sequence) {
  void* reply = nullptr;
  xcb_generic_error_t* rawError = nullptr;
  const int answered = xcb_poll_for_reply(connection_, sequence, &reply, &rawError);
  const XReply<xcb_generic_error_t> error(rawError);
  if (reply) return reply;
  if (error) return std::unexpected(axError(*error));
  if (answered || isLost()) return std::unexpected(AXError::cannotComplete);
  return std::nullopt;
}

bool X11Connection::hasReply(unsigned sequence) {
  read({});
  const auto answer = pollForReply(sequence);
  if (answer && *answer) std::free(**answer);
  return answer.has_value();
}

bool X11Connection::read(Deadline deadline) {
  for (;;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline.end - steady_clock::now());
    pollfd poller{xcb_get_file_descriptor(connection_), POLLIN, 0};
    const int ready = poll(&poller, 1, static_cast<int>(std::max<long>(left.count(), 0)));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return false;
    break;
  }
  if (auto* event = xcb_poll_for_event(connection_)) keep(event);
  return !isLost();
}

XEvent X11Connection::pollForEvent() {
  if (events_.empty()) return XEvent(xcb_poll_for_event(connection_));
  XEvent event = std::move(events_.front());
  events_.pop_front();
  return event;
}

XEvent X11Connection::waitForEvent(Deadline deadline) {
  flush();
  for (;;) {
    if (auto event = pollForEvent()) return event;
    if (read(deadline.hold ? deadline.orIn(ServerHold::patience) : deadline)) continue;
    const bool goesOn = deadline.hold && !hasPassed(deadline) && isAnswered(deadline);
    if (!goesOn) return nullptr;
  }
}

void X11Connection::dropEvents() {
  while (pollForEvent()) {
  }
}

PendingProperty::PendingProperty(X11Connection& connection, xcb_window_t window,
                                 xcb_atom_t property, PropertySize most)
    : reply_(connection,
             xcb_get_property(connection.raw(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                              static_cast<std::uint32_t>(most) / 4)
                 .sequence) {}

std::expected<XProperty, AXError> PendingProperty::collect(Deadline deadline) {
  const auto reply = reply_.collect(deadline);
  if (!reply) return std::unexpected(reply.error());
  const auto* value = static_cast<const char*>(xcb_get_property_value(reply->get()));
  const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply->get()));
  return XProperty{
      .type = (*reply)->type, .format = (*reply)->format, .bytes = std::string(value, length)};
}

}  // namespace pellow
