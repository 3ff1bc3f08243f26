#include "tests/linux/painted_window.h"

#include <poll.h>
#include <xcb/shape.h>

#include <array>
#include <cstdlib>
#include <span>
#include <stdexcept>

#include "tests/harness/eventually.h"

namespace pellow::desktop {
namespace {

xcb_visualid_t visualWithAlpha(const xcb_screen_t* screen) {
  for (auto depths = xcb_screen_allowed_depths_iterator(screen); depths.rem > 0;
       xcb_depth_next(&depths))
    if (depths.data->depth == 32) return xcb_depth_visuals(depths.data)->visual_id;
  throw std::runtime_error("the X server has no windows with alpha");
}

xcb_rectangle_t rectangle(PixelRect rect) {
  return {static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y),
          static_cast<std::uint16_t>(rect.width), static_cast<std::uint16_t>(rect.height)};
}

}  // namespace

PaintedWindow::PaintedWindow(const DesktopSession& desktop, PixelRect place, Looks looks)
    : connection_(xcb_connect(desktop.display().c_str(), nullptr), xcb_disconnect),
      screen_(xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data),
      place_(place),
      looks_(looks) {
  create(place);
  thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
  if (!eventually([this] { return timesDrawn_ > 0; }))
    throw std::runtime_error("a window is not shown");
}

PaintedWindow::~PaintedWindow() = default;

void PaintedWindow::create(PixelRect place) {
  auto* const raw = connection_.get();
  window_ = xcb_generate_id(raw);
  const auto visual = looks_.hasAlpha ? visualWithAlpha(screen_) : screen_->root_visual;
  const auto colours = xcb_generate_id(raw);
  xcb_create_colormap(raw, XCB_COLORMAP_ALLOC_NONE, colours, screen_->root, visual);
  const std::array<std::uint32_t, 4> values{0, looks_.isManaged ? 0u : 1u, XCB_EVENT_MASK_EXPOSURE,
                                            colours};
  const auto area = rectangle(place);
  xcb_create_window(
      raw, looks_.hasAlpha ? 32 : screen_->root_depth, window_, screen_->root, area.x, area.y,
      area.width, area.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
      XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
      values.data());
  std::array<std::uint32_t, 18> hints{1 | 2};  // the user chose position and size
  xcb_change_property(raw, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_NORMAL_HINTS,
                      XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
  xcb_map_window(raw, window_);
  xcb_flush(raw);
}

void PaintedWindow::run(const std::stop_token& stop) {
  pollfd source{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
  while (!stop.stop_requested() && !xcb_connection_has_error(connection_.get())) {
    poll(&source, 1, 5);
    while (auto* event = xcb_poll_for_event(connection_.get())) {
      const bool isExposure = (event->response_type & 0x7f) == XCB_EXPOSE;
      const bool isLast =
          isExposure && reinterpret_cast<const xcb_expose_event_t*>(event)->count == 0;
      std::free(event);
      if (isLast) draw();
    }
  }
}

void PaintedWindow::draw() {
  auto* const raw = connection_.get();
  {
    const std::lock_guard lock(mutex_);
    if (act_) return act_();
  }
  const auto context = xcb_generate_id(raw);
  xcb_create_gc(raw, context, window_, 0, nullptr);
  const int half = place_.width / 2;
  const auto fill = [&](std::uint32_t colour, PixelRect part) {
    const auto area = rectangle(part);
    xcb_change_gc(raw, context, XCB_GC_FOREGROUND, &colour);
    xcb_poly_fill_rectangle(raw, window_, context, 1, &area);
  };
  fill(looks_.left, {0, 0, half, place_.height});
  fill(looks_.right, {half, 0, half, place_.height});
  xcb_free_gc(raw, context);
  std::free(xcb_get_input_focus_reply(raw, xcb_get_input_focus(raw), nullptr));
  ++timesDrawn_;
}

void PaintedWindow::shape(PixelRect part) {
  const auto area = rectangle(part);
  auto* const raw = connection_.get();
  xcb_shape_rectangles(raw, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED,
                       window_, 0, 0, 1, &area);
  std::free(xcb_get_input_focus_reply(raw, xcb_get_input_focus(raw), nullptr));
}

void PaintedWindow::insteadOfDrawing(std::function<void()> act) {
  const std::lock_guard lock(mutex_);
  act_ = std::move(act);
}

void PaintedWindow::destroy() {
  xcb_destroy_window(connection_.get(), window_);
  xcb_flush(connection_.get());
}

}  // namespace pellow::desktop
