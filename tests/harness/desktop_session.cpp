#include "tests/harness/desktop_session.h"

#include <signal.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <type_traits>

#include "tests/harness/eventually.h"

namespace pellow::desktop {
namespace {

constexpr std::uint32_t fromPager = 2;  // says EWMH

// Sends an xcb request and takes the reply with its …_reply function; empty if the server answered
// an error.
template <class Cookie, class Reply, class... Parameters>
std::unique_ptr<Reply, decltype(&std::free)> ask(
    xcb_connection_t* connection, Cookie (*request)(xcb_connection_t*, Parameters...),
    Reply* (*takeReply)(xcb_connection_t*, Cookie, xcb_generic_error_t**),
    std::type_identity_t<Parameters>... arguments) {
  xcb_generic_error_t* error = nullptr;
  auto* const reply = takeReply(connection, request(connection, arguments...), &error);
  std::free(error);
  return {reply, std::free};
}

// Asks the same about many windows, in one trip to the server.
template <typename Request, typename Reply, typename Cookie>
auto askAll(xcb_connection_t* connection, const std::vector<WindowID>& windows, Request request,
            Reply* (*takeReply)(xcb_connection_t*, Cookie, xcb_generic_error_t**)) {
  std::vector<Cookie> cookies;
  for (const auto window : windows) cookies.push_back(request(window));
  std::vector<std::unique_ptr<Reply, decltype(&std::free)>> replies;
  for (const auto cookie : cookies) {
    xcb_generic_error_t* error = nullptr;
    replies.emplace_back(takeReply(connection, cookie, &error), std::free);
    std::free(error);
  }
  return replies;
}

bool isShown(const xcb_get_window_attributes_reply_t* attributes) {
  return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
         attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
}

std::string_view text(const xcb_get_property_reply_t* property) {
  if (!property) return {};
  return {static_cast<const char*>(xcb_get_property_value(property)),
          static_cast<std::size_t>(xcb_get_property_value_length(property))};
}

std::filesystem::path makeTemporaryFolder() {
  auto name = (std::filesystem::temp_directory_path() / "pellow-test-XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error("cannot make a temporary folder");
  return name;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const PixelRect& rect) {
  return out << rect.width << "x" << rect.height << " at (" << rect.x << ", " << rect.y << ")";
}

int Picture::count(std::uint32_t colour) const {
  const auto isNear = [colour](std::uint32_t pixel) {
    for (const int shift : {16, 8, 0})
      if (std::abs(int(pixel >> shift & 0xff) - int(colour >> shift & 0xff)) > 2) return false;
    return true;
  };
  return static_cast<int>(std::ranges::count_if(pixels, isNear));
}

void Picture::write(const std::filesystem::path& file) const {
  std::ofstream stream(file);
  stream << "P6 " << width << ' ' << height << " 255\n";
  for (const auto pixel : pixels)
    for (const int shift : {16, 8, 0}) stream.put(static_cast<char>(pixel >> shift));
}

DesktopSession::DesktopSession(DesktopOptions options)
    : options_(std::move(options)), folder_(makeTemporaryFolder()) {
  std::filesystem::create_directories(configHome());
  std::filesystem::create_directory(runtimeFolder());
  std::filesystem::permissions(runtimeFolder(), std::filesystem::perms::owner_all);
  startServer();
  connect();
  if (options_.windowManager.command.empty()) return;
  startWindowManager();
  startCompositor();
}

DesktopSession::~DesktopSession() {
  connection_.reset();
  compositor_.reset();
  windowManager_.reset();
  // Unlike a killed server, one that is told to end leaves no lock behind.
  if (server_) {
    server_->send(SIGTERM);
    (void)server_->exitStatus();
  }
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

Environment DesktopSession::environment() const {
  Environment result{
      {"HOME", folder_ / "home"},
      {"XDG_CONFIG_HOME", configHome()},
      {"XDG_RUNTIME_DIR", runtimeFolder()},
      // No bus: a library that finds none may start one, which would outlive the test.
      {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (runtimeFolder() / "bus").string()},
      {"NO_AT_BRIDGE", "1"},
      {"LANG", "C.UTF-8"},
  };
  if (!display_.empty()) result["DISPLAY"] = display_;
  for (const auto* name : {"PATH", "TMPDIR", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"}) {
    if (const auto* value = std::getenv(name)) result[name] = value;
  }
  return result;
}

std::unique_ptr<ChildProcess> DesktopSession::start(const std::vector<std::string>& command,
                                                    const Environment& changes) const {
  auto full = environment();
  for (const auto& [name, value] : changes) full[name] = value;
  return std::make_unique<ChildProcess>(command, full);
}

void DesktopSession::startServer() {
  const auto size = std::to_string(options_.width) + "x" + std::to_string(options_.height) + "x24";
  std::vector<std::string> command{"Xvfb",      "-displayfd", "1",        "-screen", "0", size,
                                   "-nolisten", "tcp",        "-noreset", "-dpi",    "96"};
  std::ranges::copy(options_.serverArguments, std::back_inserter(command));
  server_ = start(command);
  const auto number = server_->readLine();
  if (!number) throw std::runtime_error("Xvfb does not start: " + server_->standardError());
  display_ = ":" + *number;
}

void DesktopSession::connect() {
  connection_.reset(xcb_connect(display_.c_str(), nullptr));
  if (xcb_connection_has_error(connection_.get()))
    throw std::runtime_error("cannot connect to " + display_);
  root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
  // The answers to pings come to the root window, under a mask that varies with the toolkit.
  const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection_.get(), root_, XCB_CW_EVENT_MASK, &mask);
  sync();
}

void DesktopSession::startWindowManager() {
  windowManager_ = start(options_.windowManager.command);
  awaitWindowManager(0);
}

// Some window managers composite without being told so, and some not although they are told.
void DesktopSession::startCompositor() {
  const auto& manager = options_.windowManager;
  if (!manager.compositor.empty()) compositor_ = start(manager.compositor);
  const auto composites = [&] {
    const auto owner = ask(connection_.get(), xcb_get_selection_owner,
                           xcb_get_selection_owner_reply, atom("_NET_WM_CM_S0"));
    return owner && owner->owner != 0;
  };
  if (manager.composites ? !eventually(composites) : composites())
    throw std::runtime_error(manager.command[0] + " composites, or does not, against the plan");
}

std::unique_ptr<ChildProcess> DesktopSession::startSessionBus() const {
  auto bus = start({"dbus-daemon", "--session", "--nofork", "--print-address",
                    "--address=" + environment().at("DBUS_SESSION_BUS_ADDRESS")});
  if (!bus->readLine()) throw std::runtime_error("no session bus: " + bus->standardError());
  return bus;
}

void DesktopSession::replaceWindowManager(Command command) {
  const auto predecessor = windowManagerCheck();
  const auto old = std::move(windowManager_);
  options_.windowManager.command = std::move(command);
  windowManager_ = start(options_.windowManager.command);
  awaitWindowManager(predecessor);
}

void DesktopSession::restartWindowManager() {
  // Some cannot be told to end: fluxbox talks to the server in its signal handler, and hangs if it
  // was already doing so.
  windowManager_->kill();
  if (!eventually([this] { return windowManagerCheck() == 0; }))
    throw std::runtime_error("the window manager does not end");
  startWindowManager();
}

void DesktopSession::killServer() { server_->kill(); }

// The window that proves that a window manager runs; 0 when none does.
WindowID DesktopSession::windowManagerCheck() const {
  const auto check = values(root_, "_NET_SUPPORTING_WM_CHECK");
  const bool proves = !check.empty() && values(check[0], "_NET_SUPPORTING_WM_CHECK") == check;
  return proves ? check[0] : 0;
}

void DesktopSession::awaitWindowManager(WindowID predecessor) {
  const bool manages = eventually([&] {
    const auto check = windowManagerCheck();
    return check != 0 && check != predecessor;
  });
  if (!manages) {
    throw std::runtime_error(options_.windowManager.command[0] +
                             " does not start: " + windowManager_->standardError());
  }
  seeItManage();
}

// A window manager announces itself before its main loop runs, and some then ignore the first
// window until something else happens. So a window of ours goes first, with things happening.
void DesktopSession::seeItManage() {
  const auto probe = xcb_generate_id(connection_.get());
  xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, probe, root_, 0, 0, 10, 10, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
  xcb_map_window(connection_.get(), probe);
  const auto happening = atom("_PELLOW_TEST_NUDGE");
  const auto eventuallyManages = [&](bool managed) {
    return eventually([&] {
      xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, root_, happening,
                          XCB_ATOM_CARDINAL, 32, 1, &probe);
      const auto windows = clients();
      return managed == (std::ranges::find(windows, probe) != windows.end());
    });
  };
  const bool came = eventuallyManages(true);
  xcb_destroy_window(connection_.get(), probe);
  if (!came || !eventuallyManages(false))
    throw std::runtime_error(options_.windowManager.command[0] + " does not manage a window");
}

WindowID DesktopSession::activeWindow() const {
  const auto windows = values(root_, "_NET_ACTIVE_WINDOW");
  return windows.empty() ? 0 : windows[0];
}

// Level by level: watching must not keep the server from the programs being watched.
std::vector<WindowID> DesktopSession::shownWindows(std::string_view windowClass,
                                                   std::string_view name) const {
  auto* const server = connection_.get();
  const auto nameAndClass = std::string(name) + '\0' + std::string(windowClass) + '\0';
  const auto classProperty = atom("WM_CLASS");
  const auto attributes = [&](WindowID window) {
    return xcb_get_window_attributes(server, window);
  };
  const auto windowClassOf = [&](WindowID window) {
    return xcb_get_property(server, 0, window, classProperty, XCB_ATOM_ANY, 0, 1 << 20);
  };
  std::vector<WindowID> found;
  for (std::vector level{root_}; !level.empty();) {
    const auto inside = childrenOf(level);
    const auto looks = askAll(server, inside, attributes, xcb_get_window_attributes_reply);
    const auto classes = askAll(server, inside, windowClassOf, xcb_get_property_reply);
    level.clear();
    for (std::size_t index = 0; index < inside.size(); ++index) {
      if (!pellow::desktop::isShown(looks[index].get())) continue;
      level.push_back(inside[index]);
      if (text(classes[index].get()) == nameAndClass) found.push_back(inside[index]);
    }
  }
  return found;
}

std::vector<WindowID> DesktopSession::childrenOf(const std::vector<WindowID>& windows) const {
  auto* const server = connection_.get();
  std::vector<WindowID> all;
  for (const auto& tree : askAll(
           server, windows, [&](WindowID window) { return xcb_query_tree(server, window); },
           xcb_query_tree_reply)) {
    if (!tree) continue;
    const auto* const children = xcb_query_tree_children(tree.get());
    all.insert(all.end(), children, children + xcb_query_tree_children_length(tree.get()));
  }
  return all;
}

bool DesktopSession::isShown(WindowID window) const {
  return pellow::desktop::isShown(
      ask(connection_.get(), xcb_get_window_attributes, xcb_get_window_attributes_reply, window)
          .get());
}

PixelRect DesktopSession::workArea() const {
  const auto area = values(root_, "_NET_WORKAREA");
  if (area.size() < 4) return screen();
  const auto number = [&](std::size_t index) { return static_cast<int>(area[index]); };
  return {number(0), number(1), number(2), number(3)};
}

bool DesktopSession::exists(WindowID window) const {
  return ask(connection_.get(), xcb_get_geometry, xcb_get_geometry_reply, window) != nullptr;
}

PixelRect DesktopSession::frame(WindowID window) const {
  auto rect = content(window);
  const auto grow = [&](const std::vector<std::uint32_t>& extents, int by) {
    if (extents.size() != 4) return;  // left, right, top, bottom
    const auto side = [&](std::size_t index) { return by * static_cast<int>(extents[index]); };
    rect.x -= side(0);
    rect.y -= side(2);
    rect.width += side(0) + side(1);
    rect.height += side(2) + side(3);
  };
  grow(values(window, "_NET_FRAME_EXTENTS"), 1);
  grow(values(window, "_GTK_FRAME_EXTENTS"), -1);
  return rect;
}

PixelRect DesktopSession::content(WindowID window) const {
  const auto geometry = ask(connection_.get(), xcb_get_geometry, xcb_get_geometry_reply, window);
  const auto origin = ask(connection_.get(), xcb_translate_coordinates,
                          xcb_translate_coordinates_reply, window, root_, 0, 0);
  if (!geometry || !origin) return {};
  return {origin->dst_x, origin->dst_y, geometry->width, geometry->height};
}

std::vector<std::uint32_t> DesktopSession::values(WindowID window,
                                                  std::string_view property) const {
  const auto raw = bytes(window, property);
  std::vector<std::uint32_t> result(raw.size() / sizeof(std::uint32_t));
  std::copy_n(raw.data(), result.size() * sizeof(std::uint32_t),
              reinterpret_cast<char*>(result.data()));
  return result;
}

std::string DesktopSession::bytes(WindowID window, std::string_view property) const {
  const auto answer = ask(connection_.get(), xcb_get_property, xcb_get_property_reply, 0, window,
                          atom(property), XCB_ATOM_ANY, 0, 1 << 20);
  return std::string(text(answer.get()));
}

bool DesktopSession::hasState(WindowID window, std::string_view state) const {
  const auto states = values(window, "_NET_WM_STATE");
  return std::ranges::find(states, atom(state)) != states.end();
}

bool DesktopSession::supports(std::string_view hint) const {
  const auto hints = values(root_, "_NET_SUPPORTED");
  return std::ranges::find(hints, atom(hint)) != hints.end();
}

bool DesktopSession::hasKeyboard(WindowID window) const {
  const auto focus = ask(connection_.get(), xcb_get_input_focus, xcb_get_input_focus_reply);
  for (auto each = focus ? focus->focus : 0; each > XCB_INPUT_FOCUS_POINTER_ROOT;) {
    if (each == window) return true;
    const auto tree = ask(connection_.get(), xcb_query_tree, xcb_query_tree_reply, each);
    each = tree ? tree->parent : 0;
  }
  return false;
}

bool DesktopSession::standsStill() const {
  return !options_.windowManager.composites ||
         comesToRest([&] { return picture(screen()).pixels; }, std::chrono::milliseconds(300));
}

Picture DesktopSession::picture(PixelRect part) const {
  const auto whole = screen();
  const int left = std::clamp(part.x, 0, whole.width);
  const int top = std::clamp(part.y, 0, whole.height);
  const int right = std::clamp(part.x + part.width, left, whole.width);
  const int bottom = std::clamp(part.y + part.height, top, whole.height);
  Picture picture{.width = right - left, .height = bottom - top};
  if (picture.width == 0 || picture.height == 0) return picture;

  const auto answer = ask(connection_.get(), xcb_get_image, xcb_get_image_reply,
                          XCB_IMAGE_FORMAT_Z_PIXMAP, root_, static_cast<std::int16_t>(left),
                          static_cast<std::int16_t>(top), static_cast<std::uint16_t>(picture.width),
                          static_cast<std::uint16_t>(picture.height), ~0U);
  if (!answer) throw std::runtime_error("the server gives no image");
  const auto* data = reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(answer.get()));
  picture.pixels.assign(data, data + std::size_t(picture.width) * picture.height);
  for (auto& pixel : picture.pixels) pixel &= 0xffffff;
  return picture;
}

void DesktopSession::type(std::initializer_list<KeySym> chord) {
  for (const auto keySym : chord) fakeInput(XCB_KEY_PRESS, keycode(keySym));
  for (auto iterator = std::rbegin(chord); iterator != std::rend(chord); ++iterator)
    fakeInput(XCB_KEY_RELEASE, keycode(*iterator));
}

void DesktopSession::hold(KeySym keySym) {
  fakeInput(XCB_KEY_PRESS, keycode(keySym));
  std::this_thread::sleep_for(std::chrono::seconds(1));
  fakeInput(XCB_KEY_RELEASE, keycode(keySym));
  // Pressed again in the same millisecond it would be one repeat more.
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

void DesktopSession::click(int x, int y, std::uint8_t button) {
  movePointer(x, y);
  press(button);
  release(button);
}

bool DesktopSession::activate(WindowID window, std::chrono::seconds bound) {
  askWindowManager(window, "_NET_ACTIVE_WINDOW", {fromPager, XCB_CURRENT_TIME, 0});
  return eventually([&] { return activeWindow() == window; }, bound);
}

void DesktopSession::close(WindowID window) {
  askWindowManager(window, "_NET_CLOSE_WINDOW", {XCB_CURRENT_TIME, fromPager});
}

void DesktopSession::iconify(WindowID window) {
  constexpr std::uint32_t iconicState = 3;
  askWindowManager(window, "WM_CHANGE_STATE", {iconicState});
}

void DesktopSession::changeState(WindowID window, std::string_view state, bool add) {
  askWindowManager(window, "_NET_WM_STATE", {add ? 1U : 0U, atom(state), 0, fromPager});
}

void DesktopSession::sendToDesktop(WindowID window, std::uint32_t desktop) {
  askWindowManager(window, "_NET_WM_DESKTOP", {desktop, fromPager});
}

bool DesktopSession::switchTo(std::uint32_t desktop) {
  const auto count = values(root_, "_NET_NUMBER_OF_DESKTOPS");
  if (count.empty() || count[0] <= desktop)
    askWindowManager(root_, "_NET_NUMBER_OF_DESKTOPS", {desktop + 1});
  askWindowManager(root_, "_NET_CURRENT_DESKTOP", {desktop, XCB_CURRENT_TIME});
  return eventually(
      [&] { return values(root_, "_NET_CURRENT_DESKTOP") == std::vector<std::uint32_t>{desktop}; });
}

bool DesktopSession::showBareDesktop(bool shows) {
  const std::uint32_t value = shows ? 1 : 0;
  askWindowManager(root_, "_NET_SHOWING_DESKTOP", {value});
  return eventually(
      [&] { return values(root_, "_NET_SHOWING_DESKTOP") == std::vector<std::uint32_t>{value}; });
}

bool DesktopSession::answersPing(WindowID window) {
  const auto ping = ++lastPing_;
  sendMessage(window, XCB_EVENT_MASK_NO_EVENT, window, "WM_PROTOCOLS",
              {atom("_NET_WM_PING"), ping, window});
  bool answers = false;
  const bool isSettled = eventually([&] {
    while (auto* event = xcb_poll_for_event(connection_.get())) {
      const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> owner(event, std::free);
      if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE) continue;
      const auto& message = *reinterpret_cast<const xcb_client_message_event_t*>(event);
      answers |= message.window == root_ && message.data.data32[1] == ping;
    }
    return answers || !exists(window);
  });
  return isSettled && answers;
}

xcb_atom_t DesktopSession::atom(std::string_view name) const {
  const auto answer = ask(connection_.get(), xcb_intern_atom, xcb_intern_atom_reply, 0,
                          static_cast<std::uint16_t>(name.size()), name.data());
  if (!answer) throw std::runtime_error("the server is gone");
  return answer->atom;
}

void DesktopSession::sendMessage(WindowID destination, std::uint32_t mask, WindowID window,
                                 std::string_view type,
                                 std::initializer_list<std::uint32_t> data) const {
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = window;
  message.type = atom(type);
  std::ranges::copy(data, message.data.data32);
  xcb_send_event(connection_.get(), 0, destination, mask, reinterpret_cast<const char*>(&message));
  sync();
}

void DesktopSession::askWindowManager(WindowID window, std::string_view type,
                                      std::initializer_list<std::uint32_t> data) const {
  sendMessage(root_, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
              window, type, data);
}

void DesktopSession::fakeInput(std::uint8_t type, std::uint8_t detail, int x, int y) const {
  xcb_test_fake_input(connection_.get(), type, detail, XCB_CURRENT_TIME, root_,
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
  sync();
}

std::uint8_t DesktopSession::keycode(KeySym keySym) const {
  const auto* setup = xcb_get_setup(connection_.get());
  const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
  const auto mapping = ask(connection_.get(), xcb_get_keyboard_mapping,
                           xcb_get_keyboard_mapping_reply, setup->min_keycode, count);
  if (!mapping) throw std::runtime_error("the server has no keyboard");
  const auto* keySyms = xcb_get_keyboard_mapping_keysyms(mapping.get());
  const auto columns = mapping->keysyms_per_keycode;
  for (int row = 0; row < count; ++row) {
    if (keySyms[row * columns] == keySym)
      return static_cast<std::uint8_t>(setup->min_keycode + row);
  }
  throw std::runtime_error("the keyboard has no such key");
}

void DesktopSession::sync() const {
  (void)ask(connection_.get(), xcb_get_input_focus, xcb_get_input_focus_reply);
}

}  // namespace pellow::desktop
