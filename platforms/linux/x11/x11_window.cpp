#include "platforms/linux/x11/x11_window.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <random>
#include <ranges>
#include <set>
#include <thread>

#include "platforms/linux/x11/text_encoding.h"

namespace pellow {

namespace {

constexpr std::uint32_t icccmIconic = 3;

struct Extents {
  int left = 0;
  int right = 0;
  int top = 0;
  int bottom = 0;
};

// None that nobody can mean.
Extents extents(const XProperty& property) {
  constexpr std::uint32_t most = 2048;  // pixels
  const auto words = property.words();
  if (words.size() < 4 || std::ranges::max(words | std::views::take(4)) > most) return {};
  return {static_cast<int>(words[0]), static_cast<int>(words[1]), static_cast<int>(words[2]),
          static_cast<int>(words[3])};
}

PixelRect grown(const PixelRect& rect, const Extents& by) {
  return {rect.x - by.left, rect.y - by.top, rect.width + by.left + by.right,
          rect.height + by.top + by.bottom};
}

// Something is left of it.
PixelRect shrunk(const PixelRect& rect, const Extents& by) {
  if (by.left + by.right >= rect.width || by.top + by.bottom >= rect.height) return rect;
  return grown(rect, {-by.left, -by.right, -by.top, -by.bottom});
}

// The bits and the places of _PELLOW_STATE.
std::vector<std::uint32_t> leftState(const XProperty& property) {
  constexpr std::size_t most = 5;
  auto words = property.words();
  words.resize(std::min(words.size(), most));
  for (auto& word : words | std::views::drop(1))
    word = static_cast<std::uint32_t>(pixelCoordinate(word));
  return words;
}

std::uint64_t identity(const XProperty& property) {
  const auto words = property.words();
  if (words.size() < 2) return 0;
  return std::uint64_t{words[0]} << 32 | words[1];
}

}  // namespace

WindowLook::WindowLook(X11Server& server, X11Connection& connection, xcb_window_t window,
                       Facet facets)
    : server_(server), connection_(connection), window_(window), facets_(facets) {
  const auto& atoms = server.atoms();
  properties_.reserve(12);
  ask(atoms.pellowWindowID);
  if (has(facets, Facet::state)) {
    attributes_.emplace(connection.pending<xcb_get_window_attributes_reply_t>(
        xcb_get_window_attributes(connection.raw(), window)));
    for (const auto atom : {atoms.netWMState, atoms.wmState, atoms.pellowHidden, atoms.netWMDesktop,
                            atoms.pellowState})
      ask(atom);
  }
  if (has(facets, Facet::frame)) {
    geometry_.emplace(
        connection.pending<xcb_get_geometry_reply_t>(xcb_get_geometry(connection.raw(), window)));
    position_.emplace(connection.pending<xcb_translate_coordinates_reply_t>(
        xcb_translate_coordinates(connection.raw(), window, connection.root(), 0, 0)));
    tree_.emplace(
        connection.pending<xcb_query_tree_reply_t>(xcb_query_tree(connection.raw(), window)));
    ask(atoms.netFrameExtents);
    ask(atoms.gtkFrameExtents);
  }
  if (has(facets, Facet::kind)) {
    ask(atoms.netWMWindowType);
    ask(XCB_ATOM_WM_TRANSIENT_FOR);
  }
  if (has(facets, Facet::wmClass)) ask(XCB_ATOM_WM_CLASS);
  if (has(facets, Facet::title)) {
    ask(atoms.netWMName);
    ask(XCB_ATOM_WM_NAME);
  }
  if (has(facets, Facet::icon)) ask(atoms.netWMIcon, PropertySize::icons);
}

void WindowLook::ask(xcb_atom_t property, PropertySize most) {
  properties_.emplace_back(connection_, window_, property, most);
}

XProperty WindowLook::next() {
  auto answer = properties_[collected_++].collect(deadline_);
  if (answer) return std::move(*answer);
  if (!failure_) failure_ = answer.error();
  return {};
}

template <class Reply>
XReply<Reply> WindowLook::take(std::optional<PendingReply<Reply>>& pending) {
  auto answer = pending->collect(deadline_);
  if (answer) return std::move(*answer);
  if (!failure_) failure_ = answer.error();
  return nullptr;
}

std::expected<WindowFacts, AXError> WindowLook::collect(Deadline deadline) {
  deadline_ = deadline;
  WindowFacts facts{.window = window_};
  facts.id = identity(next());
  if (has(facets_, Facet::state)) readState(facts.state);
  if (has(facets_, Facet::frame)) readFrame(facts);
  if (has(facets_, Facet::kind)) facts.kind = readKind();
  if (has(facets_, Facet::wmClass)) readClass(facts);
  if (has(facets_, Facet::title)) facts.title = readTitle();
  if (has(facets_, Facet::icon)) facts.icon = next().words();
  if (failure_) return std::unexpected(*failure_);
  return facts;
}

void WindowLook::readState(WindowFacts::State& state) {
  const auto& atoms = server_.atoms();
  const auto attributes = take(attributes_);
  const auto states = next();
  state.hidden = states.contains(atoms.netWMStateHidden);
  state.shaded = states.contains(atoms.netWMStateShaded);
  state.fullScreen = states.contains(atoms.netWMStateFullscreen);
  state.maximizedHorizontally = states.contains(atoms.netWMStateMaximizedHorz);
  state.maximizedVertically = states.contains(atoms.netWMStateMaximizedVert);
  state.skipsTaskbar = states.contains(atoms.netWMStateSkipTaskbar);
  const auto wmState = next().firstWord();
  state.iconic = wmState == icccmIconic;
  // While a window manager is replaced, windows have no WM_STATE but stay mapped.
  const bool isUnmapped = attributes && attributes->map_state == XCB_MAP_STATE_UNMAPPED;
  state.withdrawn =
      wmState.value_or(0) == 0 && isUnmapped && server_.isWindowManagerSettled(deadline_);
  state.viewable = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
  state.belongsToHiddenApplication = next().exists();
  state.desktop = next().firstWord();
  state.leftState = leftState(next());
}

void WindowLook::readFrame(WindowFacts& facts) {
  const auto geometry = take(geometry_);
  const auto position = take(position_);
  const auto tree = take(tree_);
  const auto decoration = next();
  const auto shadow = next();
  if (!geometry || !position || !tree) return;
  const PixelRect content{position->dst_x, position->dst_y, geometry->width, geometry->height};
  const PixelRect outer = grown(content, extents(decoration));
  facts.content = content;
  facts.outerCorner = outer.origin();
  facts.frame = shrunk(outer, extents(shadow));
  facts.parent = tree->parent;
}

WindowKind WindowLook::readKind() {
  const auto& atoms = server_.atoms();
  const auto types = next();
  const auto own = next().exists() ? WindowKind::dialog : WindowKind::standard;
  if (!types.exists()) return own;
  for (const auto type : types.words()) {
    if (type == atoms.netWMWindowTypeNormal) return own;
    if (type == atoms.netWMWindowTypeDialog) return WindowKind::dialog;
    if (type == atoms.netWMWindowTypeUtility) return WindowKind::floating;
  }
  return WindowKind::furniture;
}

void WindowLook::readClass(WindowFacts& facts) {
  const auto property = next();
  const std::string_view both = property.bytes;
  const auto end = both.find('\0');
  facts.instanceName = validUTF8(both.substr(0, end));
  if (end == std::string_view::npos) return;
  const auto second = both.substr(end + 1);
  facts.className = validUTF8(second.substr(0, second.find('\0')));
}

std::string WindowLook::readTitle() {
  const auto modern = next();
  const auto old = next();
  if (modern.exists()) return validUTF8(modern.bytes);
  if (old.type == XCB_ATOM_STRING) return utf8FromLatin1(old.bytes);
  return validUTF8(old.bytes);
}

namespace {

// Of a window manager whose frames fly.
enum class FrameMotion {
  none,
  happened,  // since the window was looked at
  goesOn,    // told by its width, which is not its content's
  rolledUp,  // no higher than its title bar: on its way, or shaded
};

FrameMotion frameMotion(const WindowFacts& window, const PixelRect& frame) {
  const int around = 2 * (window.content.x - window.outerCorner.x);
  if (frame.width != window.content.width + around) return FrameMotion::goesOn;
  if (frame.height < window.content.height) return FrameMotion::rolledUp;
  return frame.origin() == window.outerCorner ? FrameMotion::none : FrameMotion::happened;
}

bool isShaded(X11Server& server, xcb_window_t window, Deadline deadline) {
  const auto facts =
      WindowLook(server, server.connection(), window, Facet::state).collect(deadline);
  return facts && facts->state.shaded;
}

// A look at a window and, in the same breath, at the frame around it.
std::expected<WindowFacts, AXError> lookWithFrame(X11Server& server, xcb_window_t window,
                                                  Facet facets, Deadline deadline,
                                                  FrameMotion& motion) {
  auto& connection = server.connection();
  WindowLook windowLook(server, connection, window, facets);
  const auto supposed = server.lastParent(window);
  std::optional<PlaceLook> frameLook;
  if (supposed) frameLook.emplace(connection, supposed);

  auto facts = windowLook.collect(deadline);
  motion = FrameMotion::none;
  if (!facts || facts->parent == connection.root()) return facts;
  if (facts->parent != supposed) frameLook.emplace(connection, facts->parent);
  if (const auto frame = frameLook->collect(deadline)) motion = frameMotion(*facts, *frame);
  return facts;
}

}  // namespace

std::expected<WindowFacts, AXError> look(X11Server& server, const WindowKey& window, Facet facets,
                                         Deadline deadline) {
  constexpr Seconds patience = 1;
  constexpr std::chrono::milliseconds step{5};
  const Deadline end = deadline.orIn(patience);
  const bool framesFly = server.windowManager().framesFly;
  for (;;) {
    auto motion = FrameMotion::none;
    auto facts =
        has(facets, Facet::frame) && framesFly
            ? lookWithFrame(server, window.window, facets, deadline, motion)
            : WindowLook(server, server.connection(), window.window, facets).collect(deadline);
    if (facts && facts->id != window.id) return std::unexpected(AXError::invalidUIElement);
    if (facts && has(facets, Facet::frame)) server.setParent(window.window, facts->parent);
    if (!facts || motion == FrameMotion::none) return facts;
    if (motion == FrameMotion::rolledUp && isShaded(server, window.window, deadline)) return facts;
    if (Deadline::Clock::now() + step > end.end) return facts;
    if (motion != FrameMotion::happened) std::this_thread::sleep_for(step);
  }
}

std::vector<WindowFacts> lookAtAll(X11Server& server, const std::vector<xcb_window_t>& windows,
                                   Facet facets, Deadline deadline) {
  auto& connection = server.connection();
  std::vector<WindowLook> looks;
  looks.reserve(windows.size());
  for (const auto window : windows) looks.emplace_back(server, connection, window, facets);
  std::vector<WindowFacts> found;
  found.reserve(windows.size());
  for (auto& each : looks)
    if (auto facts = each.collect(deadline)) found.push_back(std::move(*facts));
  return found;
}

void giveIdentities(X11Server& server, std::vector<WindowFacts>& windows, Deadline deadline) {
  auto& connection = server.connection();
  std::random_device random;
  std::vector<std::pair<WindowFacts*, PendingProperty>> pending;
  for (auto& facts : windows) {
    if (facts.id != 0) continue;
    // Appending lets the first one win when several threads or processes name a window at once:
    // the first eight bytes never change.
    const std::array<std::uint32_t, 2> id{random() | 1u, random()};
    xcb_change_property(connection.raw(), XCB_PROP_MODE_APPEND, facts.window,
                        server.atoms().pellowWindowID, XCB_ATOM_CARDINAL, 32, id.size(), id.data());
    pending.emplace_back(&facts, connection.property(facts.window, server.atoms().pellowWindowID));
  }
  for (auto& [facts, property] : pending)
    if (const auto found = property.collect(deadline)) facts->id = identity(*found);
  std::erase_if(windows, [](const WindowFacts& facts) { return facts.id == 0; });
}

bool isIconified(X11Server& server, const WindowFacts::State& state, Deadline deadline) {
  if (server.windowManagerSupports(server.atoms().netWMStateHidden))
    return state.hidden && !state.shaded;
  return state.iconic && state.isOn(currentDesktop(server, deadline));
}

bool isMinimized(X11Server& server, const WindowFacts::State& state, Deadline deadline) {
  return !state.belongsToHiddenApplication && isIconified(server, state, deadline);
}

std::expected<xcb_window_t, AXError> outermostWindow(X11Server& server, xcb_window_t window,
                                                     Deadline deadline) {
  auto& connection = server.connection();
  for (;;) {
    auto pending =
        connection.pending<xcb_query_tree_reply_t>(xcb_query_tree(connection.raw(), window));
    const auto tree = pending.collect(deadline);
    if (!tree) return std::unexpected(tree.error());
    const auto parent = (*tree)->parent;
    if (parent == connection.root() || parent == XCB_WINDOW_NONE) return window;
    window = parent;
  }
}

PlaceLook::PlaceLook(X11Connection& connection, xcb_window_t window)
    : geometry_(
          connection.pending<xcb_get_geometry_reply_t>(xcb_get_geometry(connection.raw(), window))),
      origin_(connection.pending<xcb_translate_coordinates_reply_t>(
          xcb_translate_coordinates(connection.raw(), window, connection.root(), 0, 0))) {}

std::expected<PixelRect, AXError> PlaceLook::collect(Deadline deadline) {
  const auto geometry = geometry_.collect(deadline);
  if (!geometry) return std::unexpected(geometry.error());
  const auto origin = origin_.collect(deadline);
  if (!origin) return std::unexpected(origin.error());
  return PixelRect{(*origin)->dst_x, (*origin)->dst_y, (*geometry)->width, (*geometry)->height};
}

std::expected<PixelRect, AXError> placeOf(X11Server& server, xcb_window_t window,
                                          Deadline deadline) {
  return PlaceLook(server.connection(), window).collect(deadline);
}

std::vector<xcb_window_t> clientList(X11Server& server, xcb_atom_t list, Deadline deadline) {
  auto& connection = server.connection();
  const auto property =
      connection.property(connection.root(), list, PropertySize::windows).collect(deadline);
  if (!property) return {};
  auto windows = property->words();
  std::set<xcb_window_t> known{XCB_WINDOW_NONE, connection.root()};
  std::erase_if(windows, [&](xcb_window_t window) { return !known.insert(window).second; });
  return windows;
}

std::uint32_t currentDesktop(X11Server& server, Deadline deadline) {
  auto& connection = server.connection();
  const auto property =
      connection.property(connection.root(), server.atoms().netCurrentDesktop).collect(deadline);
  return property ? property->firstWord().value_or(0) : 0;
}

std::optional<xcb_window_t> activeWindow(X11Server& server, Deadline deadline) {
  auto& connection = server.connection();
  const auto property =
      connection.property(connection.root(), server.atoms().netActiveWindow).collect(deadline);
  const auto window = property ? property->firstWord() : std::nullopt;
  return window.value_or(XCB_WINDOW_NONE) == XCB_WINDOW_NONE ? std::nullopt : window;
}

}  // namespace pellow
