#include "platforms/linux/x11/window_photographer.h"

#include <fmt/format.h>
#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <utility>

namespace pellow {

namespace {

using std::chrono::steady_clock;

// An application draws a window in several steps, and nothing tells which is the last: it counts as
// done when it has drawn nothing for a moment.
constexpr Seconds leastRepaintTime = 0.06;
constexpr Seconds quietTime = 0.03;
constexpr Seconds repaintPatience = 0.6;

bool hasExtension(X11Connection& connection, xcb_extension_t& extension) {
  const auto* const data = xcb_get_extension_data(connection.raw(), &extension);
  return data && data->present;
}

SystemError sentenceFor(AXError error) {
  if (error == AXError::invalidUIElement) return {"The window is gone."};
  if (error == AXError::cannotComplete) return {"The X server did not answer in time."};
  return {"The X server refused to show the window."};
}

class Pixmap {
 public:
  explicit Pixmap(X11Connection& connection)
      : connection_(connection), id_(xcb_generate_id(connection.raw())) {}
  ~Pixmap() { xcb_free_pixmap(connection_.raw(), id_); }
  Pixmap(const Pixmap&) = delete;
  Pixmap& operator=(const Pixmap&) = delete;

  xcb_pixmap_t id() const { return id_; }

 private:
  X11Connection& connection_;
  xcb_pixmap_t id_;
};

class GraphicsContext {
 public:
  // Copies windows with all that is in them, and tells what it could not copy.
  GraphicsContext(X11Connection& connection, xcb_drawable_t drawable)
      : connection_(connection), id_(xcb_generate_id(connection.raw())) {
    const std::array<std::uint32_t, 2> values{XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 1};
    xcb_create_gc(connection.raw(), id_, drawable,
                  XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES, values.data());
  }
  ~GraphicsContext() { xcb_free_gc(connection_.raw(), id_); }
  GraphicsContext(const GraphicsContext&) = delete;
  GraphicsContext& operator=(const GraphicsContext&) = delete;

  void clip(const std::vector<xcb_rectangle_t>& rectangles) {
    xcb_set_clip_rectangles(connection_.raw(), XCB_CLIP_ORDERING_UNSORTED, id_, 0, 0,
                            static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
  }
  xcb_void_cookie_t copy(xcb_drawable_t from, xcb_drawable_t to, const PixelRect& source,
                         PixelPoint target) {
    return xcb_copy_area_checked(
        connection_.raw(), from, to, id_, static_cast<std::int16_t>(source.x),
        static_cast<std::int16_t>(source.y), static_cast<std::int16_t>(target.x),
        static_cast<std::int16_t>(target.y), static_cast<std::uint16_t>(source.width),
        static_cast<std::uint16_t>(source.height));
  }

 private:
  X11Connection& connection_;
  xcb_gcontext_t id_;
};

PixelRect moved(const PixelRect& rect, int dx, int dy) {
  return {rect.x + dx, rect.y + dy, rect.width, rect.height};
}

xcb_rectangle_t rectangle(const PixelRect& rect) {
  return {static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y),
          static_cast<std::uint16_t>(rect.width), static_cast<std::uint16_t>(rect.height)};
}

// X servers may crash when they are to draw off the screen what no pixmap can hold.
bool isTooLarge(const PixelRect& window) {
  constexpr std::int64_t mostPixels = 1 << 26;
  return window.area() > mostPixels || std::max(window.width, window.height) > INT16_MAX;
}

// Makes the picture transparent outside these parts.
void keepOnly(const std::vector<xcb_rectangle_t>& shape, Pixels& pixels) {
  const PixelRect whole{0, 0, pixels.size.width, pixels.size.height};
  std::vector<bool> isInside(pixels.values.size());
  for (const auto& each : shape) {
    const auto part = whole.intersection({each.x, each.y, each.width, each.height});
    if (part == whole) return;
    for (int y = part.y; y < part.maxY(); ++y) {
      const auto row = isInside.begin() + std::ptrdiff_t{y} * whole.width;
      std::fill(row + part.x, row + part.maxX(), true);
    }
  }
  for (std::size_t i = 0; i < isInside.size(); ++i)
    if (!isInside[i]) pixels.values[i] = 0;
}

}  // namespace

// What is to be photographed: part of a child of the root.
struct WindowPhotographer::Subject {
  xcb_window_t window = XCB_WINDOW_NONE;
  std::uint8_t depth = 0;
  PixelRect outside;                   // on the X screen, with the border
  PixelRect inside;                    // the same without
  PixelRect part;                      // of `outside`
  std::vector<xcb_rectangle_t> shape;  // relative to the part
  PixelRect content;                   // the window without decoration, relative to the part
};

// Which pixels of the part are still missing.
class WindowPhotographer::Coverage {
 public:
  explicit Coverage(PixelSize size)
      : whole_{0, 0, size.width, size.height}, isMissing_(std::size_t(whole_.area())) {}

  bool isComplete() const { return count_ == 0; }
  void mark(const PixelRect& area, bool isMissing) {
    const auto part = whole_.intersection(area);
    for (int y = part.y; y < part.maxY(); ++y) {
      const auto row = isMissing_.begin() + std::ptrdiff_t{y} * whole_.width;
      count_ -= std::count(row + part.x, row + part.maxX(), true);
      std::fill(row + part.x, row + part.maxX(), isMissing);
      if (isMissing) count_ += part.width;
    }
  }

 private:
  PixelRect whole_;
  std::vector<bool> isMissing_;
  std::ptrdiff_t count_ = 0;
};

// A window that is drawn off the screen for a moment, and what is drawn in it.
class WindowPhotographer::Redirection {
 public:
  Redirection(X11Connection& connection, xcb_window_t window)
      : connection_(connection), window_(window), damage_(xcb_generate_id(connection.raw())) {
    auto* const raw = connection.raw();
    // The server paints the backgrounds at once, and the application draws afterwards; both count.
    xcb_grab_server(raw);
    xcb_damage_create(raw, damage_, window, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    begin_ = xcb_composite_redirect_window(raw, window, XCB_COMPOSITE_REDIRECT_AUTOMATIC).sequence;
    xcb_ungrab_server(raw);
    connection.flush();
    damageEvent_ = xcb_get_extension_data(raw, &xcb_damage_id)->first_event + XCB_DAMAGE_NOTIFY;
  }
  ~Redirection() {
    xcb_damage_destroy(connection_.raw(), damage_);
    xcb_composite_unredirect_window(connection_.raw(), window_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    connection_.flush();
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

  // What an event says to be drawn anew, relative to the window; nothing for other events and for
  // what was there before.
  std::optional<PixelRect> painted(const xcb_generic_event_t& event) const {
    if ((event.response_type & 0x7f) != damageEvent_) return std::nullopt;
    if (static_cast<std::int32_t>(event.full_sequence - begin_) < 0) return std::nullopt;
    const auto& area = reinterpret_cast<const xcb_damage_notify_event_t&>(event).area;
    return PixelRect{area.x, area.y, area.width, area.height};
  }

 private:
  X11Connection& connection_;
  xcb_window_t window_;
  xcb_damage_damage_t damage_;
  std::uint32_t begin_ = 0;
  int damageEvent_ = 0;
};

WindowPhotographer::WindowPhotographer(X11Server& server)
    : server_(server), connection_(server.connection()), reader_(connection_) {
  if (connection_.isLost() || !isPossible(connection_)) return;
  // The server takes no requests of an extension before it is told the version.
  auto* const raw = connection_.raw();
  xcb_discard_reply(raw, xcb_composite_query_version(raw, 0, 4).sequence);
  xcb_discard_reply(raw, xcb_xfixes_query_version(raw, 5, 0).sequence);
  xcb_discard_reply(raw, xcb_damage_query_version(raw, 1, 1).sequence);
}

bool WindowPhotographer::isPossible(X11Connection& connection) {
  return hasExtension(connection, xcb_composite_id) && hasExtension(connection, xcb_xfixes_id) &&
         hasExtension(connection, xcb_damage_id) && hasExtension(connection, xcb_shape_id);
}

std::expected<Pixels, SystemError> WindowPhotographer::photograph(xcb_window_t window) {
  if (connection_.isLost()) return std::unexpected(sentenceFor(AXError::cannotComplete));
  if (!isPossible(connection_))
    return std::unexpected(SystemError{"The X server cannot draw windows off the screen."});
  connection_.dropEvents();
  const Deadline deadline = deadlineIn(serverPatience);
  const auto subject = findSubject(window, deadline);
  if (!subject) return std::unexpected(subject.error());

  auto picture = readRedirected(*subject, deadline);
  if (picture && server_.windowManager().drawsDecorationLate)
    keepOnly({rectangle(subject->content)}, *picture);
  if (!picture && picture.error() != AXError::cannotComplete) {
    Coverage missing({subject->part.width, subject->part.height});
    picture = readScreen(*subject, missing, deadline);
    if (picture && !missing.isComplete()) picture = readAfterRepaint(*subject, missing, deadline);
    if (picture && !missing.isComplete())
      return std::unexpected(
          SystemError{"The window is covered, and its application has not drawn it anew in time."});
  }
  if (!picture) return std::unexpected(sentenceFor(picture.error()));
  keepOnly(subject->shape, *picture);
  return std::move(*picture);
}

std::expected<WindowPhotographer::Subject, SystemError> WindowPhotographer::findSubject(
    xcb_window_t window, Deadline deadline) {
  const auto fail = [](AXError error) { return std::unexpected(sentenceFor(error)); };
  const auto facts =
      WindowLook(server_, connection_, window, Facet::state | Facet::frame).collect(deadline);
  if (!facts) return fail(facts.error());
  if (!facts->state.viewable)
    return std::unexpected(SystemError{"The window is not on the screen."});
  const auto outermost = outermostWindow(server_, window, deadline);
  if (!outermost) return fail(outermost.error());

  auto* const raw = connection_.raw();
  auto pendingGeometry =
      connection_.pending<xcb_get_geometry_reply_t>(xcb_get_geometry(raw, *outermost));
  auto pendingShape = connection_.pending<xcb_shape_get_rectangles_reply_t>(
      xcb_shape_get_rectangles(raw, *outermost, XCB_SHAPE_SK_BOUNDING));
  const auto geometry = pendingGeometry.collect(deadline);
  if (!geometry) return fail(geometry.error());
  const auto shape = pendingShape.collect(deadline);
  if (!shape) return fail(shape.error());

  const int border = (*geometry)->border_width;
  const PixelRect inside{(*geometry)->x + border, (*geometry)->y + border, (*geometry)->width,
                         (*geometry)->height};
  Subject subject{.window = *outermost,
                  .depth = (*geometry)->depth,
                  .outside = {inside.x - border, inside.y - border, inside.width + 2 * border,
                              inside.height + 2 * border},
                  .inside = inside};
  subject.part = facts->frame.intersection(subject.outside);
  if (subject.part.area() == 0) return fail(AXError::failure);
  if (isTooLarge(subject.outside))
    return std::unexpected(SystemError{"The window is too large to be photographed."});
  if (!reader_.canRead(subject.depth))
    return std::unexpected(SystemError{fmt::format(
        "A window with {} bits of colour cannot be photographed, only 24.", subject.depth)});

  const auto content = placeOf(server_, window, deadline);
  if (!content) return fail(content.error());
  subject.content = moved(*content, -subject.part.x, -subject.part.y);
  const auto* const first = xcb_shape_get_rectangles_rectangles(shape->get());
  subject.shape.assign(first, first + xcb_shape_get_rectangles_rectangles_length(shape->get()));
  for (auto& each : subject.shape) {
    each.x = static_cast<std::int16_t>(each.x + subject.inside.x - subject.part.x);
    each.y = static_cast<std::int16_t>(each.y + subject.inside.y - subject.part.y);
  }
  return subject;
}

WindowPhotographer::Picture WindowPhotographer::readRedirected(const Subject& subject,
                                                               Deadline deadline) {
  const Pixmap pixmap(connection_);
  const auto named = connection_.check(
      xcb_composite_name_window_pixmap_checked(connection_.raw(), subject.window, pixmap.id()),
      deadline);
  if (!named) return std::unexpected(named.error());
  return reader_.read(pixmap.id(), subject.depth,
                      moved(subject.part, -subject.outside.x, -subject.outside.y), deadline);
}

WindowPhotographer::Picture WindowPhotographer::readScreen(const Subject& subject,
                                                           Coverage& missing, Deadline deadline) {
  const auto& part = subject.part;
  const Pixmap pixmap(connection_);
  xcb_create_pixmap(connection_.raw(), subject.depth, pixmap.id(), subject.window,
                    static_cast<std::uint16_t>(part.width),
                    static_cast<std::uint16_t>(part.height));
  GraphicsContext context(connection_, pixmap.id());
  const auto copy = [&](xcb_window_t from, const PixelRect& source, PixelPoint target) {
    return connection_.check(context.copy(from, pixmap.id(), source, target), deadline);
  };
  // The border belongs to no window that could be copied from; it is seen where its window is.
  if (subject.inside != subject.outside)
    if (const auto copied = copy(connection_.root(), part, {}); !copied)
      return std::unexpected(copied.error());
  connection_.dropEvents();
  context.clip(subject.shape);
  const auto inner = part.intersection(subject.inside);
  const auto copied = copy(subject.window, moved(inner, -subject.inside.x, -subject.inside.y),
                           {inner.x - part.x, inner.y - part.y});
  if (!copied) return std::unexpected(copied.error());
  // The server has told by now what was covered by other windows or beyond the screen.
  while (const auto event = connection_.pollForEvent()) {
    if ((event->response_type & 0x7f) != XCB_GRAPHICS_EXPOSURE) continue;
    const auto& area = reinterpret_cast<const xcb_graphics_exposure_event_t&>(*event);
    if (area.drawable == pixmap.id()) missing.mark({area.x, area.y, area.width, area.height}, true);
  }
  return reader_.read(pixmap.id(), subject.depth, {0, 0, part.width, part.height}, deadline);
}

WindowPhotographer::Picture WindowPhotographer::readAfterRepaint(const Subject& subject,
                                                                 Coverage& missing,
                                                                 Deadline deadline) {
  const Redirection redirection(connection_, subject.window);
  awaitRepaint(redirection, subject, missing);
  return readRedirected(subject, deadline);
}

void WindowPhotographer::awaitRepaint(const Redirection& redirection, const Subject& subject,
                                      Coverage& missing) {
  const Deadline end = deadlineIn(repaintPatience);
  Deadline settled = deadlineIn(leastRepaintTime);
  while (!hasPassed(end)) {
    const auto event = connection_.waitForEvent(missing.isComplete() ? settled : end);
    if (!event) return;
    const auto area = redirection.painted(*event);
    if (!area) continue;
    missing.mark(moved(*area, subject.inside.x - subject.part.x, subject.inside.y - subject.part.y),
                 false);
    settled = std::min(std::max(settled, deadlineIn(quietTime)), end);
  }
}

}  // namespace pellow
