// A client that means harm: windows of every kind that come and go, with junk in whatever the
// program reads of them, of the root window and of events. The one argument is the seed. Each line
// on standard input is answered with what it has done so far; it ends with the input.

#include <poll.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using std::chrono::steady_clock;

constexpr std::array ownProperties{
    "_GTK_FRAME_EXTENTS",
    "_GTK_THEME_VARIANT",
    "_MOTIF_WM_HINTS",
    "_NET_FRAME_EXTENTS",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_WM_ALLOWED_ACTIONS",
    "_NET_WM_DESKTOP",
    "_NET_WM_ICON",
    "_NET_WM_NAME",
    "_NET_WM_PID",
    "_NET_WM_STATE",
    "_NET_WM_STRUT",
    "_NET_WM_STRUT_PARTIAL",
    "_NET_WM_WINDOW_TYPE",
    "_PELLOW_HIDDEN",
    "_PELLOW_STATE",
    "_PELLOW_WINDOW_ID",
    "WM_CLASS",
    "WM_CLIENT_MACHINE",
    "WM_NAME",
    "WM_NORMAL_HINTS",
    "WM_STATE",
    "WM_TRANSIENT_FOR",
};
constexpr std::array rootProperties{
    "AT_SPI_BUS",     "_NET_ACTIVE_WINDOW",        "_NET_CLIENT_LIST",
    "_NET_WORKAREA",  "_NET_CLIENT_LIST_STACKING", "_NET_CURRENT_DESKTOP",
    "_NET_SUPPORTED", "_NET_SUPPORTING_WM_CHECK",  "_NET_SHOWING_DESKTOP",
    "_NET_WM_NAME",
};
// Found where their names are expected.
constexpr std::array values{
    "ATOM",
    "CARDINAL",
    "INTEGER",
    "STRING",
    "UTF8_STRING",
    "WINDOW",
    "_NET_WM_ACTION_MINIMIZE",
    "_NET_WM_STATE_FULLSCREEN",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_STATE_MAXIMIZED_VERT",
    "_NET_WM_STATE_SHADED",
    "_NET_WM_STATE_SKIP_TASKBAR",
    "_NET_WM_WINDOW_TYPE_DIALOG",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_NORMAL",
    "_NET_WM_WINDOW_TYPE_UTILITY",
};
constexpr std::array<std::uint32_t, 9> edges{0,          1,          2,          0x7fff,    0xffff,
                                             0x7fffffff, 0x80000000, 0xfffffff0, 0xffffffff};

struct Property {
  xcb_atom_t type = XCB_ATOM_NONE;
  std::uint8_t format = 8;
  std::string bytes;

  bool operator==(const Property&) const = default;
};

class Hostile {
 public:
  explicit Hostile(unsigned seed) : random_(seed), connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_)) std::exit(1);
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    for (const auto* name : ownProperties) own_.push_back(atom(name));
    for (const auto* name : rootProperties) roots_.push_back(atom(name));
    for (const auto* name : values) values_.push_back(atom(name));
  }

  void run() {
    constexpr int actionsAtOnce = 10;
    for (pollfd input{STDIN_FILENO, POLLIN, 0}; !xcb_connection_has_error(connection_);) {
      for (int i = 0; i < actionsAtOnce; ++i) act();
      xcb_flush(connection_);
      while (auto* event = xcb_poll_for_event(connection_)) std::free(event);
      if (poll(&input, 1, 10) <= 0) continue;
      if (std::string line; !std::getline(std::cin, line)) return;
      std::cout << made_ << " windows, " << written_ << " properties, " << rootsWritten_
                << " of them on the root window" << std::endl;
    }
  }

 private:
  std::uint32_t upTo(std::uint32_t most) {
    return std::uniform_int_distribution(0u, most)(random_);
  }
  template <class Range>
  auto oneOf(const Range& range) {
    return range[upTo(static_cast<std::uint32_t>(range.size()) - 1)];
  }
  bool oneIn(std::uint32_t many) { return upTo(many - 1) == 0; }

  void act() {
    constexpr std::size_t mostWindows = 24;
    if (windows_.empty() || (windows_.size() < mostWindows && oneIn(12))) return make();
    const auto window = oneOf(windows_);
    switch (upTo(15)) {
      case 0:
        return destroy();
      case 1:
        oneIn(2) ? xcb_map_window(connection_, window) : xcb_unmap_window(connection_, window);
        return;
      case 2:
        return configure(window);
      case 3:
        xcb_reparent_window(connection_, window, oneIn(2) ? root_ : oneOf(windows_), place(),
                            place());
        return;
      case 4:
        xcb_delete_property(connection_, window, oneOf(own_));
        return;
      case 5:
        return oneIn(4) ? sendEvent(oneIn(2) ? root_ : window) : void();
      case 6:
        return oneIn(5) ? spoilRoot() : void();
      default:
        return spoil(window);
    }
  }

  void make() {
    const auto window = xcb_generate_id(connection_);
    const std::uint32_t bypass = oneIn(4);
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, place(), place(), length(),
                      length(), 0,
                      oneIn(10) ? XCB_WINDOW_CLASS_INPUT_ONLY : XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &bypass);
    for (auto i = upTo(6); i > 0; --i) spoil(window);
    xcb_map_window(connection_, window);
    windows_.push_back(window);
    ++made_;
  }

  void destroy() {
    const auto at = windows_.begin() + upTo(static_cast<std::uint32_t>(windows_.size()) - 1);
    xcb_destroy_window(connection_, *at);
    windows_.erase(at);
  }

  void configure(xcb_window_t window) {
    const std::array<std::uint32_t, 5> numbers{static_cast<std::uint32_t>(place()),
                                               static_cast<std::uint32_t>(place()), length(),
                                               length(), upTo(4)};
    xcb_configure_window(connection_, window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT | XCB_CONFIG_WINDOW_STACK_MODE,
                         numbers.data());
  }

  std::int16_t place() {
    const int most = oneIn(4) ? INT16_MAX : 1000;
    return static_cast<std::int16_t>(std::uniform_int_distribution(-most, most)(random_));
  }
  std::uint16_t length() {
    return static_cast<std::uint16_t>(1 + upTo(oneIn(6) ? UINT16_MAX - 1 : 600));
  }
  std::uint32_t word() {
    switch (upTo(5)) {
      case 0:
      case 1:
        return oneOf(edges);
      case 2:
        return oneOf(values_);
      case 3:
        return windows_.empty() ? root_ : oneOf(windows_);
      case 4:
        return upTo(3000);
      default:
        return upTo(UINT32_MAX);
    }
  }

  Property junk() {
    constexpr std::array<std::uint8_t, 5> formats{32, 32, 32, 16, 8};
    Property property{.type = oneOf(values_), .format = oneOf(formats)};
    const auto count = oneIn(30) ? upTo(8000) : upTo(16);
    for (std::uint32_t i = 0; i < count; ++i) {
      const auto number = word();
      property.bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
    }
    return property;
  }

  void spoil(xcb_window_t window) {
    const auto name = oneOf(own_);
    auto property = junk();
    // openbox never comes back from an icon whose width times height does not fit.
    if (name == icon_ && property.format == 32)
      for (std::size_t i = 0; i < property.bytes.size(); i += 4)
        property.bytes.replace(i + 1, 3, 3, '\0');
    write(window, name, property);
  }

  void write(xcb_window_t window, xcb_atom_t name, const Property& property) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, name, property.type,
                        property.format,
                        static_cast<std::uint32_t>(property.bytes.size() * 8 / property.format),
                        property.bytes.data());
    ++written_;
  }

  Property read(xcb_window_t window, xcb_atom_t name) {
    const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
        xcb_get_property_reply(
            connection_,
            xcb_get_property(connection_, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, 1 << 20),
            nullptr),
        std::free);
    if (!reply) return {};
    return {reply->type, reply->format,
            std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
                        static_cast<std::size_t>(xcb_get_property_value_length(reply.get())))};
  }

  // For a moment only: nobody else would ever set it right, and nothing would work any more. What
  // somebody has written meanwhile stays.
  void spoilRoot() {
    const auto name = oneOf(roots_);
    const auto before = read(root_, name);
    const auto spoilt = junk();
    write(root_, name, spoilt);
    ++rootsWritten_;
    xcb_flush(connection_);
    std::this_thread::sleep_for(std::chrono::milliseconds(upTo(25)));
    xcb_grab_server(connection_);
    if (read(root_, name) == spoilt) {
      if (before.type == XCB_ATOM_NONE)
        xcb_delete_property(connection_, root_, name);
      else
        write(root_, name, before);
    }
    xcb_ungrab_server(connection_);
  }

  // Events like those of the server, which any client may send; those of the protocol only.
  void sendEvent(xcb_window_t to) {
    constexpr std::uint32_t anybody = XCB_EVENT_MASK_PROPERTY_CHANGE |
                                      XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                      XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    std::array<std::uint32_t, 8> event{};
    for (auto& each : event) each = word();
    event[0] = XCB_CREATE_NOTIFY + upTo(XCB_PROPERTY_NOTIFY - XCB_CREATE_NOTIFY);
    xcb_send_event(connection_, 0, to, anybody, reinterpret_cast<const char*>(event.data()));
  }

  xcb_atom_t atom(std::string_view name) {
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(
            connection_,
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
            nullptr),
        std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  }

  std::mt19937 random_;
  xcb_connection_t* connection_;
  xcb_window_t root_ = XCB_WINDOW_NONE;
  xcb_atom_t icon_ = atom("_NET_WM_ICON");
  std::vector<xcb_atom_t> own_;
  std::vector<xcb_atom_t> roots_;
  std::vector<xcb_atom_t> values_;
  std::vector<xcb_window_t> windows_;
  int made_ = 0;
  int written_ = 0;
  int rootsWritten_ = 0;
};

}  // namespace

int main(int count, char** arguments) {
  Hostile(count > 1 ? static_cast<unsigned>(std::stoul(arguments[1])) : 1).run();
}
