// An application for the tests: plain windows that obey the lines on standard input.
//
//   new X Y WIDTH HEIGHT TITLE            answers "window ID"
//   bare X Y WIDTH HEIGHT TITLE           the same without any decoration
//   shadowed X Y WIDTH HEIGHT TITLE       the same within a shadow of its own
//   dialog OWNER X Y WIDTH HEIGHT TITLE   answers "window ID"
//   anonymous X Y WIDTH HEIGHT TITLE      the same without a class and a process id
//   typed TYPE X Y WIDTH HEIGHT TITLE     the same of a window type such as SPLASH
//   skipping X Y WIDTH HEIGHT TITLE       the same that stays out of taskbars
//   dock SIDE X Y WIDTH HEIGHT TITLE      answers "window ID"; keeps a side of the screen
//   strut ID SIDE DEPTH                   changes how much a dock keeps
//   title ID TEXT
//   state ID ATOM [ATOM]                  asks the window manager to set window states
//   destroy ID
//   reconnect                             loses all windows and starts anew, with the same XIDs
//   grab MILLISECONDS                     answers "grabbed"; has the server for itself that long
//   storm ROUNDS                          answers "calm" after windows came and went so often
//
// The one argument is the class of the windows.

#include <poll.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/harness/test_client.h"

namespace {

struct Place {
  int x = 0;
  int y = 0;
  unsigned width = 0;
  unsigned height = 0;
};

std::istream& operator>>(std::istream& in, Place& place) {
  return in >> place.x >> place.y >> place.width >> place.height;
}

std::string restOfLine(std::istream& in) {
  std::string text;
  std::getline(in >> std::ws, text);
  return text;
}

class Client {
 public:
  explicit Client(std::string windowClass) : windowClass_(std::move(windowClass)) { connect(); }
  ~Client() { xcb_disconnect(connection_); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  bool isConnected() const { return screen_ != nullptr; }

  // Lives until the end of the input or of the server.
  void run() {
    std::string input;
    while (!xcb_connection_has_error(connection_)) {
      dropEvents();
      xcb_flush(connection_);
      pollfd sources[] = {{STDIN_FILENO, POLLIN, 0},
                          {xcb_get_file_descriptor(connection_), POLLIN, 0}};
      poll(sources, 2, -1);
      if (sources[0].revents == 0) continue;
      char buffer[4096];
      const auto count = read(STDIN_FILENO, buffer, sizeof buffer);
      if (count <= 0) return;
      input.append(buffer, static_cast<std::size_t>(count));
      for (auto end = input.find('\n'); end != std::string::npos; end = input.find('\n')) {
        obey(std::istringstream(input.substr(0, end)));
        input.erase(0, end + 1);
      }
    }
  }

 private:
  void connect() {
    connection_ = xcb_connect(nullptr, nullptr);
    if (!xcb_connection_has_error(connection_))
      screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
  }

  void obey(std::istringstream line) {
    constexpr std::string_view kinds = " new bare shadowed dialog anonymous typed skipping dock ";
    std::string command;
    std::uint32_t number = 0;  // mostly that of a window
    line >> command;
    if (kinds.contains(' ' + command + ' ')) {
      Place place;
      std::string detail;
      if (command == "dialog") line >> number;
      if (command == "typed" || command == "dock") line >> detail;
      line >> place;
      const auto opened = open(command, restOfLine(line), place, number, detail);
      xcb_flush(connection_);
      std::cout << "window " << opened << std::endl;
      return;
    }
    line >> number;
    if (command == "strut") {
      std::string side;
      std::uint32_t depth = 0;
      line >> side >> depth;
      keepSide(number, side, depth, 0, UINT16_MAX);
    }
    if (command == "title") setTitle(number, restOfLine(line));
    if (command == "state") {
      std::string first;
      std::string second;
      line >> first >> second;
      addState(number, first, second);
    }
    if (command == "destroy") xcb_destroy_window(connection_, number);
    if (command == "grab") grab(std::chrono::milliseconds(number));
    if (command == "storm") storm(static_cast<int>(number));
    if (command == "reconnect") {
      xcb_disconnect(connection_);
      connect();
    }
  }

  xcb_window_t open(const std::string& kind, const std::string& title, Place place,
                    xcb_window_t owner, const std::string& detail) {
    constexpr auto shadow = std::uint32_t{pellow::desktop::TestClient::shadow};
    if (kind == "shadowed") {
      place.x -= int{shadow};
      place.y -= int{shadow};
      place.width += 2 * shadow;
      place.height += 2 * shadow;
    }
    const auto window = xcb_generate_id(connection_);
    const auto colour = pellow::desktop::TestClient::colourOf(window);
    create(window, screen_->root, place, kind == "shadowed" ? screen_->black_pixel : colour);
    if (kind == "shadowed") {
      const auto inside = xcb_generate_id(connection_);
      create(inside, window, {shadow, shadow, place.width - 2 * shadow, place.height - 2 * shadow},
             colour);
      xcb_map_window(connection_, inside);
    }
    if (kind != "anonymous") {
      setText(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING,
              windowClass_ + '\0' + windowClass_ + '\0');
      setValues(window, "_NET_WM_PID", XCB_ATOM_CARDINAL, {static_cast<std::uint32_t>(getpid())});
    }
    setTitle(window, title);
    setValues(window, "_NET_WM_ICON", XCB_ATOM_CARDINAL, icon());
    // As if the user had chosen position and size, so that the window manager keeps them.
    std::vector<std::uint32_t> hints(18);
    hints[0] = 1 | 2;
    setValues(window, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, hints);
    if (kind == "bare" || kind == "shadowed") {
      constexpr std::uint32_t hasDecorations = 2;
      setValues(window, "_MOTIF_WM_HINTS", atom("_MOTIF_WM_HINTS"), {hasDecorations, 0, 0, 0, 0});
    }
    if (kind == "shadowed") {
      setValues(window, "_GTK_FRAME_EXTENTS", XCB_ATOM_CARDINAL, {shadow, shadow, shadow, shadow});
    }
    if (owner != 0) {
      setValues(window, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, {owner});
      setValues(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {atom("_NET_WM_WINDOW_TYPE_DIALOG")});
    }
    if (kind == "typed")
      setValues(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                {atom("_NET_WM_WINDOW_TYPE_" + detail)});
    if (kind == "skipping")
      setValues(window, "_NET_WM_STATE", XCB_ATOM_ATOM, {atom("_NET_WM_STATE_SKIP_TASKBAR")});
    if (kind == "dock") {
      setValues(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {atom("_NET_WM_WINDOW_TYPE_DOCK")});
      keepPlace(window, detail, place);
    }
    xcb_map_window(connection_, window);
    return window;
  }

  void create(xcb_window_t window, xcb_window_t parent, const Place& place, std::uint32_t colour) {
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, parent,
                      static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y),
                      static_cast<std::uint16_t>(place.width),
                      static_cast<std::uint16_t>(place.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      screen_->root_visual, XCB_CW_BACK_PIXEL, &colour);
  }

  // Everything from the side of the screen to the far side of the dock, along the dock's length.
  void keepPlace(xcb_window_t window, const std::string& side, const Place& place) {
    const auto x = static_cast<unsigned>(place.x);
    const auto y = static_cast<unsigned>(place.y);
    if (side == "left") keepSide(window, side, x + place.width, y, y + place.height - 1);
    if (side == "right")
      keepSide(window, side, screen_->width_in_pixels - x, y, y + place.height - 1);
    if (side == "top") keepSide(window, side, y + place.height, x, x + place.width - 1);
    if (side == "bottom")
      keepSide(window, side, screen_->height_in_pixels - y, x, x + place.width - 1);
  }

  void keepSide(xcb_window_t window, std::string_view side, std::uint32_t depth, std::uint32_t from,
                std::uint32_t to) {
    constexpr std::string_view sides[] = {"left", "right", "top", "bottom"};
    std::vector<std::uint32_t> strut(12);
    for (std::size_t index = 0; index < 4; ++index) {
      if (side != sides[index]) continue;
      strut[index] = depth;
      strut[4 + 2 * index] = from;
      strut[5 + 2 * index] = to;
    }
    setValues(window, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL, strut);
  }

  void grab(std::chrono::milliseconds duration) {
    xcb_grab_server(connection_);
    sync();
    std::cout << "grabbed" << std::endl;
    std::this_thread::sleep_for(duration);
    xcb_ungrab_server(connection_);
    xcb_flush(connection_);
  }

  void storm(int rounds) {
    for (int round = 0; round < rounds; ++round) {
      const Place place{20 * (round % 30), 15 * (round % 30), 200, 100};
      const auto first = open("new", "Storm", place, 0, "");
      const auto second = open("dialog", "Thunder", place, first, "");
      setTitle(first, "Storm " + std::to_string(round));
      if (round % 3 == 0) sync();
      xcb_unmap_window(connection_, first);
      if (round % 2 == 0) xcb_map_window(connection_, first);
      if (round % 5 == 0) sync();
      xcb_destroy_window(connection_, second);
      xcb_destroy_window(connection_, first);
      sync();
    }
    std::cout << "calm" << std::endl;
  }

  void sync() const {
    std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
  }

  void setTitle(xcb_window_t window, const std::string& title) {
    setText(window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, title);
    setText(window, atom("_NET_WM_NAME"), atom("UTF8_STRING"), title);
  }

  void addState(xcb_window_t window, const std::string& first, const std::string& second) {
    constexpr std::uint32_t add = 1;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom("_NET_WM_STATE");
    message.data.data32[0] = add;
    message.data.data32[1] = atom(first);
    message.data.data32[2] = second.empty() ? 0 : atom(second);
    message.data.data32[3] = 1;  // asked by an ordinary application
    xcb_send_event(connection_, 0, screen_->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
  }

  void dropEvents() {
    while (auto* event = xcb_poll_for_event(connection_)) std::free(event);
  }

  // One size, its left half of one colour, its right half of another.
  static std::vector<std::uint32_t> icon() {
    using pellow::desktop::TestClient;
    constexpr std::uint32_t side = 48;
    constexpr std::uint32_t opaque = 0xff000000;
    std::vector<std::uint32_t> result{side, side};
    for (std::uint32_t pixel = 0; pixel < side * side; ++pixel)
      result.push_back(opaque |
                       (pixel % side < side / 2 ? TestClient::iconLeft : TestClient::iconRight));
    return result;
  }

  xcb_atom_t atom(std::string_view name) const {
    auto* reply = xcb_intern_atom_reply(
        connection_,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr);
    const xcb_atom_t result = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    std::free(reply);
    return result;
  }

  void setText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::string& text) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
  }

  void setValues(xcb_window_t window, std::string_view property, xcb_atom_t type,
                 const std::vector<std::uint32_t>& values) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), type, 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
  }

  std::string windowClass_;
  xcb_connection_t* connection_ = nullptr;
  xcb_screen_t* screen_ = nullptr;
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: " << arguments[0] << " CLASS\n";
    return 2;
  }
  Client client(arguments[1]);
  if (!client.isConnected()) {
    std::cerr << "There is no X display.\n";
    return 1;
  }
  client.run();
}
