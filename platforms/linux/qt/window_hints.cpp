#include "platforms/linux/qt/window_hints.h"

#include <xcb/shape.h>

#include <algorithm>
#include <ranges>

#include "platforms/linux/qt/qt_display.h"
#include "platforms/linux/x11/source_indication.h"

namespace pellow {
namespace {

constexpr std::uint32_t allDesktops = 0xFFFFFFFF;

}  // namespace

WindowHints::WindowHints(std::function<bool()> serverAnswers)
    : serverAnswers_(std::move(serverAnswers)),
      connection_(qtConnection()),
      state_(internAtom(connection_, "_NET_WM_STATE")),
      above_(internAtom(connection_, "_NET_WM_STATE_ABOVE")),
      below_(internAtom(connection_, "_NET_WM_STATE_BELOW")),
      sticky_(internAtom(connection_, "_NET_WM_STATE_STICKY")),
      skipTaskbar_(internAtom(connection_, "_NET_WM_STATE_SKIP_TASKBAR")),
      skipPager_(internAtom(connection_, "_NET_WM_STATE_SKIP_PAGER")),
      desktop_(internAtom(connection_, "_NET_WM_DESKTOP")),
      activeWindow_(internAtom(connection_, "_NET_ACTIVE_WINDOW")),
      stacking_(internAtom(connection_, "_NET_CLIENT_LIST_STACKING")) {}

void WindowHints::setName(xcb_window_t window, const std::string& name) const {
  using namespace std::string_literals;
  const auto value = name + "\0pellow\0"s;
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS,
                      XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(value.size()), value.data());
}

// Qt offers the protocol WM_TAKE_FOCUS for every window, and some window managers then give the
// focus to a window that does not want it.
void WindowHints::makePanel(xcb_window_t window) const {
  setAtoms(window, atom("_NET_WM_WINDOW_TYPE"), std::array{atom("_NET_WM_WINDOW_TYPE_DOCK")});
  setAtoms(window, atom("WM_PROTOCOLS"),
           std::array{atom("_NET_WM_PING"), atom("_NET_WM_SYNC_REQUEST")});
}

xcb_atom_t WindowHints::atom(std::string_view name) const { return internAtom(connection_, name); }

void WindowHints::setAtoms(xcb_window_t window, xcb_atom_t property,
                           std::span<const xcb_atom_t> atoms) const {
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_ATOM, 32,
                      static_cast<std::uint32_t>(atoms.size()), atoms.data());
}

void WindowHints::prepareForMapping(xcb_window_t window, PanelLevel level) const {
  setAtoms(window, state_,
           std::array{level == PanelLevel::statusWindow ? above_ : below_, sticky_, skipTaskbar_,
                      skipPager_});
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, desktop_, XCB_ATOM_CARDINAL, 32,
                      1, &allDesktops);
}

bool WindowHints::isInFront(xcb_window_t window, const std::set<xcb_window_t>& butFor) const {
  if (!serverAnswers()) return false;
  const auto cookie = xcb_get_property(connection_, 0, rootWindow(connection_), stacking_,
                                       XCB_ATOM_WINDOW, 0, UINT32_MAX / 4);
  const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
  if (!reply) return false;
  const auto* const first = static_cast<xcb_window_t*>(xcb_get_property_value(reply.get()));
  const auto count = static_cast<std::size_t>(xcb_get_property_value_length(reply.get())) / 4;
  for (const auto each : std::span(first, count) | std::views::reverse) {
    if (each == window) return true;
    if (!butFor.contains(each)) return false;
  }
  return false;
}

void WindowHints::changeLevel(xcb_window_t window, PanelLevel level) const {
  const bool above = level == PanelLevel::statusWindow;
  askForState(window, false, above ? below_ : above_);
  askForState(window, true, above ? above_ : below_);
  xcb_flush(connection_);
}

void WindowHints::setManaged(xcb_window_t window, bool managed) const {
  const std::uint32_t overrides = managed ? 0 : 1;
  xcb_change_window_attributes(connection_, window, XCB_CW_OVERRIDE_REDIRECT, &overrides);
}

void WindowHints::setIgnoresMouseEvents(xcb_window_t window, bool ignores) const {
  if (ignores) {
    xcb_shape_rectangles(connection_, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT,
                         XCB_CLIP_ORDERING_UNSORTED, window, 0, 0, 0, nullptr);
  } else {
    xcb_shape_mask(connection_, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, window, 0, 0,
                   XCB_PIXMAP_NONE);
  }
  xcb_flush(connection_);
}

// On the user's behalf: window managers stop applications from stealing the focus, and a key or a
// menu of another program gives Qt no time of the press.
void WindowHints::activate(xcb_window_t window) const {
  ask(window, activeWindow_, {sourcePager, XCB_CURRENT_TIME, 0, 0});
  xcb_flush(connection_);
}

void WindowHints::askForState(xcb_window_t window, bool add, xcb_atom_t state) const {
  ask(window, state_, {add ? 1U : 0U, state, 0, sourceApplication});
}

void WindowHints::ask(xcb_window_t window, xcb_atom_t what,
                      std::array<std::uint32_t, 4> data) const {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = what;
  std::ranges::copy(data, event.data.data32);
  xcb_send_event(connection_, 0, rootWindow(connection_),
                 XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                 reinterpret_cast<const char*>(&event));
}

}  // namespace pellow
