#include "platforms/linux/x11/x11_screens.h"

#include <fmt/format.h>
#include <xcb/randr.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "platforms/linux/x11/x11_window.h"

namespace pellow {

namespace {

using Monitor = ScreenLayout::Monitor;

// FNV-1a: the same number for the same name, today and tomorrow.
DisplayID displayID(std::string_view name) {
  DisplayID hash = 2166136261u;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
  return hash;
}

// Space that a dock reserves along the sides of the X screen.
//
//     ┌──────────────┐
//     │left          │  `left` is measured from the left side of the X screen and holds
//     ├───┐ from     │  for the rows from `leftFrom` to `leftTo`, both included.
//     │###│          │
//     ├───┘ to       │
//     └──────────────┘
struct Strut {
  enum Side { left, right, top, bottom };
  std::array<int, 4> depth{};
  std::array<int, 4> from{};
  std::array<int, 4> to{};

  static Strut of(const std::vector<std::uint32_t>& words) {
    Strut strut;
    for (std::size_t side = 0; side < 4 && words.size() >= 4; ++side) {
      const bool isPartial = words.size() >= 12;
      strut.depth[side] = pixelLength(words[side]);
      strut.from[side] = isPartial ? pixelLength(words[4 + 2 * side]) : 0;
      strut.to[side] = isPartial ? pixelLength(words[5 + 2 * side]) : UINT16_MAX;
    }
    return strut;
  }
};

bool overlap(int from, int to, int low, int high) { return from < high && to >= low; }

// Takes the strut off the part of the monitor that it reaches into, but never all of it.
void cut(Monitor& monitor, const Strut& strut, const PixelRect& root) {
  const PixelRect& frame = monitor.frame;
  const auto meets = [&](Strut::Side side, int low, int high) {
    return strut.depth[side] > 0 && overlap(strut.from[side], strut.to[side], low, high);
  };
  int left = monitor.visibleFrame.x;
  int top = monitor.visibleFrame.y;
  int right = monitor.visibleFrame.maxX();
  int bottom = monitor.visibleFrame.maxY();
  if (const int edge = strut.depth[Strut::left];
      meets(Strut::left, frame.y, frame.maxY()) && edge < frame.maxX())
    left = std::max(left, edge);
  if (const int edge = root.width - strut.depth[Strut::right];
      meets(Strut::right, frame.y, frame.maxY()) && edge > frame.x)
    right = std::min(right, edge);
  if (const int edge = strut.depth[Strut::top];
      meets(Strut::top, frame.x, frame.maxX()) && edge < frame.maxY())
    top = std::max(top, edge);
  if (const int edge = root.height - strut.depth[Strut::bottom];
      meets(Strut::bottom, frame.x, frame.maxX()) && edge > frame.y)
    bottom = std::min(bottom, edge);
  if (right > left && bottom > top) monitor.visibleFrame = {left, top, right - left, bottom - top};
}

// A monitor that shows only what another one shows is no other place for windows. Of equals the
// first one stays.
std::vector<Monitor> withoutMirrors(const std::vector<Monitor>& all) {
  const auto isMirror = [&](const Monitor& monitor) {
    return std::ranges::any_of(all, [&](const Monitor& other) {
      const bool showsIt = other.frame.intersection(monitor.frame) == monitor.frame;
      return showsIt && (other.frame != monitor.frame || &other < &monitor);
    });
  };
  std::vector<Monitor> monitors;
  std::ranges::remove_copy_if(all, std::back_inserter(monitors), isMirror);
  return monitors;
}

// Takes off the monitor what is not in its work area, but never all of it.
void cutTo(Monitor& monitor, const PixelRect& workArea) {
  const auto shared = monitor.visibleFrame.intersection(workArea);
  if (shared.area() > 0) monitor.visibleFrame = shared;
}

// The rectangles of a list of numbers.
std::vector<PixelRect> rectsOf(const auto& property) {
  std::vector<PixelRect> rects;
  const auto words = property ? property->words() : std::vector<std::uint32_t>{};
  for (std::size_t i = 0; i + 4 <= words.size(); i += 4)
    rects.push_back({pixelCoordinate(words[i]), pixelCoordinate(words[i + 1]),
                     pixelLength(words[i + 2]), pixelLength(words[i + 3])});
  return rects;
}

}  // namespace

X11Screens::X11Screens(X11Server& server, X11Connection& events, WindowEvents& windowEvents,
                       const Grabs& grabs, double scale)
    : server_(server), events_(events), windowEvents_(windowEvents), grabs_(grabs), scale_(scale) {
  server_.setLayout(read());
}

std::vector<Screen> X11Screens::all() const {
  const auto layout = server_.layout();
  std::vector<Screen> screens;
  for (const auto& monitor : layout.monitors) screens.push_back(layout.screen(monitor));
  return screens;
}

std::optional<Screen> X11Screens::main() const {
  const auto layout = server_.layout();
  if (layout.monitors.empty()) return std::nullopt;
  const Deadline deadline = server_.patience();
  const auto* monitor = &layout.monitors.front();
  if (!server_.answers()) {
    const auto last = std::ranges::find(layout.monitors, lastMain_, &Monitor::displayID);
    return layout.screen(last == layout.monitors.end() ? *monitor : *last);
  }
  if (const auto active = activeWindow(server_, deadline)) {
    const auto window =
        WindowLook(server_, server_.connection(), *active, Facet::frame).collect(deadline);
    const auto* own = window ? layout.monitorWithMostOf(window->frame) : nullptr;
    if (own) monitor = own;
  }
  lastMain_ = monitor->displayID;
  return layout.screen(*monitor);
}

// X knows no lock of the screen; those that there are take keyboard and pointer and cover at least
// the monitor that the pointer is on. Menus only take both.
bool X11Screens::areLocked() const {
  const Deadline deadline = server_.patience();
  const bool now = server_.answers() && isSomethingLocking();
  if (!hasPassed(deadline)) wereLocked_ = now;
  return wereLocked_;
}

bool X11Screens::isSomethingLocking() const {
  if (!grabs_.hideEverything()) return false;
  auto& connection = server_.connection();
  const Deadline deadline = server_.patience();
  auto pendingPointer = connection.pending<xcb_query_pointer_reply_t>(
      xcb_query_pointer(connection.raw(), connection.root()));
  const auto pointer = pendingPointer.collect(deadline);
  if (!pointer) return false;
  auto pendingCover = connection.pending<xcb_get_geometry_reply_t>(
      xcb_get_geometry(connection.raw(), (*pointer)->child));
  const auto reply = pendingCover.collect(deadline);
  if (!reply) return false;
  const PixelRect cover{(*reply)->x, (*reply)->y, (*reply)->width, (*reply)->height};
  const PixelRect point{(*pointer)->root_x, (*pointer)->root_y, 1, 1};
  const auto layout = server_.layout();
  const auto* monitor = layout.monitorWithMostOf(point);
  return monitor && cover.intersection(monitor->frame) == monitor->frame;
}

Subscription X11Screens::onDidChangeParameters(std::function<void()> observer) {
  return observers_.add(std::move(observer));
}

bool X11Screens::refresh() {
  if (server_.connection().isLost()) return false;
  auto layout = read();
  const auto before = server_.layout();
  if (isOutdated_ || layout == before) return false;
  server_.setLayout(std::move(layout));
  observers_.notify();
  return true;
}

void X11Screens::setScale(double scale) {
  scale_ = scale;
  refresh();
}

ScreenLayout X11Screens::read() {
  const Deadline deadline = server_.patience();
  ScreenLayout layout{.monitors = readMonitors(deadline), .scale = scale_};
  const auto docks = cutStruts(layout.monitors, deadline);
  cutWorkAreas(layout.monitors, deadline);
  isOutdated_ = hasPassed(deadline);
  if (isOutdated_ && !deadline.hold) {
    // Its reply will wake the main loop.
    events_.pending<xcb_get_input_focus_reply_t>(xcb_get_input_focus(events_.raw()));
    events_.flush();
  }
  if (!isOutdated_) watchDocks(docks);
  return layout;
}

bool X11Screens::hasMonitors(Deadline deadline) const {
  auto& connection = server_.connection();
  const auto* extension = xcb_get_extension_data(connection.raw(), &xcb_randr_id);
  if (!extension || !extension->present) return false;
  auto pending = connection.pending<xcb_randr_query_version_reply_t>(
      xcb_randr_query_version(connection.raw(), 1, 5));
  const auto version = pending.collect(deadline);
  return version && ((*version)->major_version > 1 || (*version)->minor_version >= 5);
}

std::vector<Monitor> X11Screens::readMonitors(Deadline deadline) const {
  if (!hasMonitors(deadline)) return {wholeScreen(deadline)};
  auto& connection = server_.connection();
  auto pending = connection.pending<xcb_randr_get_monitors_reply_t>(
      xcb_randr_get_monitors(connection.raw(), connection.root(), 1));
  const auto reply = pending.collect(deadline);
  if (!reply) return {wholeScreen(deadline)};

  std::vector<Monitor> monitors;
  for (auto each = xcb_randr_get_monitors_monitors_iterator(reply->get()); each.rem > 0;
       xcb_randr_monitor_info_next(&each)) {
    if (each.data->width == 0 || each.data->height == 0) continue;  // any client can make some
    auto name = connection.pending<xcb_get_atom_name_reply_t>(
        xcb_get_atom_name(connection.raw(), each.data->name));
    const auto text = name.collect(deadline);
    const auto length =
        text ? static_cast<std::size_t>(xcb_get_atom_name_name_length(text->get())) : 0;
    Monitor monitor{
        .displayID = displayID({length ? xcb_get_atom_name_name(text->get()) : "", length}),
        .frame = {each.data->x, each.data->y, each.data->width, each.data->height}};
    monitor.visibleFrame = monitor.frame;
    monitors.insert(each.data->primary ? monitors.begin() : monitors.end(), monitor);
  }
  return withoutMirrors(monitors);
}

Monitor X11Screens::wholeScreen(Deadline deadline) const {
  auto& connection = server_.connection();
  auto pending = connection.pending<xcb_get_geometry_reply_t>(
      xcb_get_geometry(connection.raw(), connection.root()));
  const auto geometry = pending.collect(deadline);
  const auto& screen = connection.screen();
  const PixelRect frame{0, 0, geometry ? (*geometry)->width : screen.width_in_pixels,
                        geometry ? (*geometry)->height : screen.height_in_pixels};
  return {.displayID = displayID("screen"), .frame = frame, .visibleFrame = frame};
}

void X11Screens::watchDocks(const std::vector<xcb_window_t>& docks) {
  std::erase_if(docks_, [&](const auto& entry) {
    return std::ranges::find(docks, entry.first) == docks.end();
  });
  for (const auto dock : docks)
    if (!docks_.contains(dock)) docks_[dock] = windowEvents_.observe(dock, [this] { refresh(); });
}

std::vector<xcb_window_t> X11Screens::cutStruts(std::vector<Monitor>& monitors,
                                                Deadline deadline) const {
  auto& connection = server_.connection();
  const auto& atoms = server_.atoms();
  const auto root = wholeScreen(deadline).frame;
  const auto windows = clientList(server_, atoms.netClientList, deadline);
  std::vector<std::pair<PendingProperty, PendingProperty>> pending;
  for (const auto window : windows)
    pending.emplace_back(connection.property(window, atoms.netWMStrutPartial),
                         connection.property(window, atoms.netWMStrut));
  std::vector<xcb_window_t> docks;
  for (std::size_t i = 0; i < windows.size(); ++i) {
    auto& [pendingPartial, pendingWhole] = pending[i];
    const auto partial = pendingPartial.collect(deadline);
    const auto whole = pendingWhole.collect(deadline);
    const bool isPartial = partial && partial->exists();
    if (!isPartial && !(whole && whole->exists())) continue;
    docks.push_back(windows[i]);
    const auto strut = Strut::of(isPartial ? partial->words() : whole->words());
    for (auto& monitor : monitors) cut(monitor, strut, root);
  }
  return docks;
}

// The work area of EWMH is one for the whole X screen and says little about several monitors. Some
// window managers tell that of each monitor, too.
void X11Screens::cutWorkAreas(std::vector<Monitor>& monitors, Deadline deadline) const {
  auto& connection = server_.connection();
  auto pending = connection.property(connection.root(), server_.atoms().netWorkarea);
  const auto desktop = currentDesktop(server_, deadline);
  const auto name = fmt::format("_GTK_WORKAREAS_D{}", desktop);
  auto pendingName = connection.pending<xcb_intern_atom_reply_t>(
      xcb_intern_atom(connection.raw(), 1, static_cast<std::uint16_t>(name.size()), name.data()));
  const auto whole = rectsOf(pending.collect(deadline));
  if (monitors.size() == 1 && !whole.empty())
    cutTo(monitors.front(), whole[desktop < whole.size() ? desktop : 0]);

  const auto atom = pendingName.collect(deadline);
  if (monitors.empty() || !atom || (*atom)->atom == XCB_ATOM_NONE) return;
  for (const auto& area :
       rectsOf(connection.property(connection.root(), (*atom)->atom).collect(deadline))) {
    const auto own = std::ranges::max_element(
        monitors, {}, [&](const Monitor& each) { return each.frame.intersection(area).area(); });
    cutTo(*own, area);
  }
}

}  // namespace pellow
