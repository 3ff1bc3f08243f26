#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platforms/linux/x11/pixel_rect.h"
#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// What a client window is to a user.
enum class WindowKind {
  standard,   // an ordinary window of its own
  dialog,     // belongs to another window
  floating,   // a palette or tool box
  furniture,  // a dock, a desktop, a menu, a notification: no window at all
};

// What to find out about a window, besides which one it is; or-ed together.
enum class Facet : unsigned { state = 1, frame = 2, kind = 4, wmClass = 8, title = 16, icon = 32 };
constexpr Facet operator|(Facet a, Facet b) {
  return static_cast<Facet>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
constexpr bool has(Facet facets, Facet one) {
  return (static_cast<unsigned>(facets) & static_cast<unsigned>(one)) != 0;
}

// What one look at a window found; only the facets that were asked for are filled.
struct WindowFacts {
  static constexpr std::uint32_t allDesktops = 0xffffffff;
  static constexpr std::uint32_t putAway = 32;  // a bit of what _PELLOW_STATE remembers

  struct State {
    bool hidden = false;  // iconified, or invisible for another reason such as being shaded
    bool shaded = false;
    bool fullScreen = false;
    bool maximizedHorizontally = false;
    bool maximizedVertically = false;
    bool skipsTaskbar = false;
    bool iconic = false;                      // WM_STATE says so
    bool withdrawn = false;                   // no window manager has it
    bool viewable = false;                    // mapped, and so is its frame
    bool belongsToHiddenApplication = false;  // Pellow's own mark
    std::optional<std::uint32_t> desktop;     // `allDesktops` for a sticky window
    std::vector<std::uint32_t> leftState;     // what _PELLOW_STATE remembers

    bool isOn(std::uint32_t currentDesktop) const {
      const auto own = desktop.value_or(currentDesktop);
      return own == currentDesktop || own == allDesktops;
    }
    bool isExpanded() const { return fullScreen || maximizedHorizontally || maximizedVertically; }
    // Whether Pellow has moved it off the monitors and not yet back.
    bool isPutAway() const { return !leftState.empty() && leftState[0] & putAway; }
  };

  xcb_window_t window = XCB_WINDOW_NONE;
  std::uint64_t id = 0;  // 0 for a window that was never given one
  State state;
  PixelRect frame;         // with the decoration, without client-side shadows
  PixelRect content;       // the client window itself
  PixelPoint outerCorner;  // top left with the decoration and with client-side shadows
  xcb_window_t parent = XCB_WINDOW_NONE;  // known with the frame
  WindowKind kind = WindowKind::standard;
  std::string instanceName;  // the two halves of WM_CLASS
  std::string className;
  std::string title;
  std::vector<std::uint32_t> icon;  // what _NET_WM_ICON holds

  WindowKey key() const { return {window, id}; }
};

// A look at a window, under way: the requests leave together and the answers are collected
// together, so that many windows cost as much time as one.
class WindowLook {
 public:
  WindowLook(X11Server& server, X11Connection& connection, xcb_window_t window, Facet facets);

  // `invalidUIElement` when the window does not exist.
  std::expected<WindowFacts, AXError> collect(Deadline deadline);

 private:
  void readState(WindowFacts::State& state);
  void readFrame(WindowFacts& facts);
  WindowKind readKind();
  void readClass(WindowFacts& facts);
  std::string readTitle();

  void ask(xcb_atom_t property, PropertySize most = PropertySize::usual);
  // The answers in the order of the questions; empty after a failure.
  XProperty next();
  template <class Reply>
  XReply<Reply> take(std::optional<PendingReply<Reply>>& pending);

  X11Server& server_;
  X11Connection& connection_;
  xcb_window_t window_;
  Facet facets_;
  std::vector<PendingProperty> properties_;  // in the order in which they are collected
  std::size_t collected_ = 0;
  Deadline deadline_;
  std::optional<AXError> failure_;  // the first one
  std::optional<PendingReply<xcb_get_window_attributes_reply_t>> attributes_;
  std::optional<PendingReply<xcb_get_geometry_reply_t>> geometry_;
  std::optional<PendingReply<xcb_translate_coordinates_reply_t>> position_;
  std::optional<PendingReply<xcb_query_tree_reply_t>> tree_;
};

// A look at a known window: `invalidUIElement` also when its XID stands for another one now.
std::expected<WindowFacts, AXError> look(X11Server& server, const WindowKey& window, Facet facets,
                                         Deadline deadline);

// Looks at many windows; leaves out those that are gone or not answered for by the deadline.
std::vector<WindowFacts> lookAtAll(X11Server& server, const std::vector<xcb_window_t>& windows,
                                   Facet facets, Deadline deadline);

// Gives windows without an identity theirs.
void giveIdentities(X11Server& server, std::vector<WindowFacts>& windows, Deadline deadline);

// Whether the window manager has iconified it, on anybody's behalf.
bool isIconified(X11Server& server, const WindowFacts::State& state, Deadline deadline);

// Whether a user would say that it is minimized, by itself and not with its application.
bool isMinimized(X11Server& server, const WindowFacts::State& state, Deadline deadline);

// The window itself or the one around it that is a child of the root.
std::expected<xcb_window_t, AXError> outermostWindow(X11Server& server, xcb_window_t window,
                                                     Deadline deadline);

// A question under way: where a window without a frame is on the X screen.
class PlaceLook {
 public:
  PlaceLook(X11Connection& connection, xcb_window_t window);

  std::expected<PixelRect, AXError> collect(Deadline deadline);

 private:
  PendingReply<xcb_get_geometry_reply_t> geometry_;
  PendingReply<xcb_translate_coordinates_reply_t> origin_;
};

std::expected<PixelRect, AXError> placeOf(X11Server& server, xcb_window_t window,
                                          Deadline deadline);

// Properties of the root window; nothing, or 0, also when the server does not tell of them before
// the deadline. Any program can write them: a list names each window once, but it may be none.
std::vector<xcb_window_t> clientList(X11Server& server, xcb_atom_t list, Deadline deadline);
std::uint32_t currentDesktop(X11Server& server, Deadline deadline);
std::optional<xcb_window_t> activeWindow(X11Server& server, Deadline deadline);

}  // namespace pellow
