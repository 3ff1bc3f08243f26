#include "platforms/linux/x11/title_bar.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <ranges>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platforms/linux/system/ini_file.h"
#include "platforms/linux/system/user_folders.h"
#include "platforms/linux/x11/desktop_settings.h"
#include "platforms/linux/x11/x11_window.h"

namespace pellow {

namespace {

// A window with the title bar around it or in it.
struct Bar {
  X11Server& server;
  xcb_window_t client;
  PixelRect area;  // without the edges of the frame
  XProperty actions;
  bool canBeMaximized;
  Deadline deadline;

  // Whether the window has a use for a button, and the title bar therefore shows it.
  bool shows(TitleButton button) const {
    const auto& atoms = server.atoms();
    switch (button) {
      case TitleButton::minimize:
        return actions.contains(atoms.netWMActionMinimize);
      case TitleButton::maximize:
        return canBeMaximized;
      case TitleButton::close:
        return actions.contains(atoms.netWMActionClose);
      case TitleButton::shade:
        return actions.contains(atoms.netWMActionShade);
      case TitleButton::stick:
      case TitleButton::menu:
        return true;
    }
    return true;
  }
  std::optional<ButtonPlace> minimizePlace(const ButtonLayout& layout) const {
    return pellow::minimizePlace(layout, [this](TitleButton button) { return shows(button); });
  }
  int numberShown(const std::vector<TitleButton>& side) const {
    return static_cast<int>(
        std::ranges::count_if(side, [this](TitleButton button) { return shows(button); }));
  }
};

// A window of a frame.
struct Piece {
  xcb_window_t window;
  PixelRect place;  // in its parent
  bool isShown;
};
using Pieces = std::vector<Piece>;

std::vector<xcb_window_t> childrenOf(const Bar& bar, xcb_window_t parent) {
  auto& connection = bar.server.connection();
  auto pending =
      connection.pending<xcb_query_tree_reply_t>(xcb_query_tree(connection.raw(), parent));
  const auto tree = pending.collect(bar.deadline);
  if (!tree) return {};
  const auto* first = xcb_query_tree_children(tree->get());
  return {first, first + xcb_query_tree_children_length(tree->get())};
}

// From the lowest one to the highest.
Pieces piecesOf(const Bar& bar, xcb_window_t parent) {
  struct Look {
    xcb_window_t window;
    PendingReply<xcb_get_geometry_reply_t> geometry;
    PendingReply<xcb_get_window_attributes_reply_t> attributes;
  };
  auto& connection = bar.server.connection();
  std::vector<Look> looks;
  for (const auto window : childrenOf(bar, parent))
    looks.push_back(
        {window,
         connection.pending<xcb_get_geometry_reply_t>(xcb_get_geometry(connection.raw(), window)),
         connection.pending<xcb_get_window_attributes_reply_t>(
             xcb_get_window_attributes(connection.raw(), window))});
  Pieces pieces;
  for (auto& look : looks) {
    const auto geometry = look.geometry.collect(bar.deadline);
    const auto attributes = look.attributes.collect(bar.deadline);
    if (!geometry || !attributes) continue;
    const auto& [x, y] = std::pair((*geometry)->x, (*geometry)->y);
    pieces.push_back({look.window,
                      {x, y, (*geometry)->width, (*geometry)->height},
                      (*attributes)->map_state == XCB_MAP_STATE_VIEWABLE});
  }
  return pieces;
}

Pieces piecesOfFrame(const Bar& bar) {
  const auto frame = outermostWindow(bar.server, bar.client, bar.deadline);
  return frame ? piecesOf(bar, *frame) : Pieces{};
}

// The part of a frame that holds the buttons: about as wide as the client, at the top of the frame.
Pieces piecesOfTitle(const Bar& bar) {
  constexpr int thickestEdge = 4;
  constexpr int thickestPadding = 10;
  const auto parts = piecesOfFrame(bar);
  const auto title = std::ranges::find_if(parts, [&](const Piece& part) {
    const auto& [x, y, width, height] = part.place;
    return part.isShown && part.window != bar.client && y < bar.area.height / 2 &&
           height > thickestEdge && height <= bar.area.height &&
           std::abs(width - bar.area.width) <= 2 * thickestPadding;
  });
  return title == parts.end() ? Pieces{} : piecesOf(bar, title->window);
}

// The buttons of openbox and xfwm4 are made in an order of their own and never restacked, whatever
// the layout; those that the layout leaves out exist, but are not shown.

std::optional<Piece> openboxButton(const Bar& bar, const ButtonLayout&) {
  const auto pieces = piecesOfTitle(bar);
  if (pieces.empty()) return std::nullopt;
  return pieces.back();
}

std::optional<Piece> xfwmButton(const Bar& bar, const ButtonLayout&) {
  auto pieces = piecesOfFrame(bar);
  std::erase_if(pieces, [&](const Piece& piece) { return piece.window == bar.client; });
  constexpr std::size_t maximizeAndClose = 2;
  if (pieces.size() <= maximizeAndClose) return std::nullopt;
  return pieces[pieces.size() - 1 - maximizeAndClose];
}

std::optional<Piece> icewmButton(const Bar& bar, const ButtonLayout&) {
  auto& connection = bar.server.connection();
  const auto pieces = piecesOfTitle(bar);
  std::vector<PendingProperty> names;
  for (const auto& piece : pieces)
    names.push_back(connection.property(piece.window, XCB_ATOM_WM_NAME));
  std::optional<Piece> found;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    const auto name = names[i].collect(bar.deadline);
    if (name && name->bytes == "Minimize") found = pieces[i];
  }
  return found;
}

// Among the buttons the label is the one that is not square.
std::optional<Piece> fluxboxButton(const Bar& bar, const ButtonLayout& layout) {
  auto buttons = piecesOfTitle(bar);
  std::erase_if(buttons, [](const Piece& piece) {
    return !piece.isShown || piece.place.width != piece.place.height;
  });
  std::ranges::sort(buttons, {}, [](const Piece& piece) { return piece.place.x; });
  const auto place = bar.minimizePlace(layout);
  const int count = static_cast<int>(buttons.size());
  if (!place || place->number >= count) return std::nullopt;
  return buttons[static_cast<std::size_t>(place->isLeft ? place->number
                                                        : count - 1 - place->number)];
}

ButtonLayout noLayout(X11Server&, Deadline) { return {}; }

ButtonLayout fluxboxLayout(X11Server& server, Deadline) {
  const auto settings = readIniGroup(homeFolder() / ".fluxbox" / "init", "", ':');
  const auto screen = std::to_string(server.connection().screenNumber());
  const auto side = [&](const std::string& name, std::string_view otherwise) {
    return value(settings, "session.screen" + screen + ".titlebar." + name, otherwise);
  };
  return ButtonLayout::fromWords(side("left", "Stick"), side("right", "Minimize Maximize Close"));
}

ButtonLayout kwinLayout(X11Server&, Deadline) {
  const auto settings = readIniGroup(configurationFolder() / "kwinrc", "org.kde.kdecoration2");
  return ButtonLayout::fromLetters(value(settings, "ButtonsOnLeft", "MS"),
                                   value(settings, "ButtonsOnRight", "HIAX"));
}

ButtonLayout metacityLayout(X11Server&, Deadline deadline) {
  return ButtonLayout::fromNames(
      gsettingsText("org.gnome.desktop.wm.preferences", "button-layout", deadline)
          .value_or("appmenu:close"));
}

ButtonLayout marcoLayout(X11Server&, Deadline deadline) {
  return ButtonLayout::fromNames(gsettingsText("org.mate.Marco.general", "button-layout", deadline)
                                     .value_or("menu:minimize,maximize,close"));
}

// As the desktop announces it to GTK applications or, if it does not, as the user's file says.
std::string gtkSetting(X11Server& server, std::string_view announced, std::string_view key,
                       std::string_view otherwise, Deadline deadline) {
  if (auto text = announcedText(server, announced, deadline)) return *std::move(text);
  const auto file = configurationFolder() / "gtk-3.0" / "settings.ini";
  return std::string(value(readIniGroup(file, "Settings"), std::string(key), otherwise));
}

bool hasOtherTheme(X11Server& server, Deadline deadline) {
  const auto theme = gtkSetting(server, "Net/ThemeName", "gtk-theme-name", "Adwaita", deadline);
  const auto hasStyleSheet = [](const char* folder) {
    std::error_code error;
    return std::filesystem::exists(configurationFolder() / folder / "gtk.css", error);
  };
  return !theme.starts_with("Adwaita") || hasStyleSheet("gtk-3.0") || hasStyleSheet("gtk-4.0");
}

ButtonLayout gtkLayout(X11Server& server, Deadline deadline) {
  const auto text = gtkSetting(server, "Gtk/DecorationLayout", "gtk-decoration-layout",
                               "menu:minimize,maximize,close", deadline);
  auto layout = ButtonLayout::fromNames(text);
  layout.isThemed = hasOtherTheme(server, deadline);
  // Its menu button is for the application's menu, which hardly any application has.
  std::erase(layout.left, TitleButton::menu);
  std::erase(layout.right, TitleButton::menu);
  return layout;
}

ButtonLayout usualLayout(X11Server&, Deadline) {
  return ButtonLayout::fromNames("menu:minimize,maximize,close");
}

}  // namespace

struct TitleBarStyle {
  TitleBarKind kind;
  ButtonLayout (*readLayout)(X11Server&, Deadline);
  // The window of the frame that is the button; null where buttons are painted.
  std::optional<Piece> (*buttonWindow)(const Bar&, const ButtonLayout&);
  // From the middle of a painted button to that of the next, in heights of the title bar. The
  // outermost one is as far from the side as from the top.
  double pitch = 0;
};

namespace {

constexpr TitleBarStyle headerBar{TitleBarKind::unknown, gtkLayout, nullptr};
constexpr int headerBarHeight = 46;  // points
constexpr int headerBarEdge = 4;     // points, where it is drawn without a shadow

constexpr std::array styles{
    TitleBarStyle{TitleBarKind::openbox, noLayout, openboxButton},
    TitleBarStyle{TitleBarKind::xfwm4, noLayout, xfwmButton},
    TitleBarStyle{TitleBarKind::icewm, noLayout, icewmButton},
    TitleBarStyle{TitleBarKind::fluxbox, fluxboxLayout, fluxboxButton},
    TitleBarStyle{TitleBarKind::marco, marcoLayout, nullptr, 0.95},
    TitleBarStyle{TitleBarKind::metacity, metacityLayout, nullptr, 0.92},
    TitleBarStyle{TitleBarKind::kwin, kwinLayout, nullptr, 0.83},
    TitleBarStyle{TitleBarKind::unknown, usualLayout, nullptr, 0.9},
};

const TitleBarStyle& styleOf(TitleBarKind kind) {
  return *std::ranges::find(styles, kind, &TitleBarStyle::kind);
}

// Where a title bar paints a button; nothing where it is too small for that.
std::optional<PixelRect> paintedAt(const PixelRect& bar, const ButtonPlace& place, double pitch) {
  const double width = pitch * bar.height;
  const double fromSide = bar.height / 2.0 + place.number * width;
  const double middle = place.isLeft ? bar.x + fromSide : bar.maxX() - fromSide;
  const PixelRect button{static_cast<int>(std::lround(middle - width / 2)), bar.y,
                         static_cast<int>(std::lround(width)), bar.height};
  if (button.x < bar.x || button.maxX() > bar.maxX()) return std::nullopt;
  return button;
}

// Where a button is in the usual theme, be it GTK 3's, GTK 4's or libadwaita's.
//
//     GTK         │ 17 17  6  17 17  6  17 17  6 ┃   points; between the buttons 6, or 3
//     libadwaita     │ 17 17 3 17 17 3 17 17  6  ┃
//     both           └─────┘  └──────┘ └─────┘
PixelRect usuallyAt(const PixelRect& bar, const ButtonPlace& place, double scale) {
  const double height = 34 * scale;
  const double width = height - 3 * place.number * scale;
  const double fromSide = (23 + 38.5 * place.number) * scale;
  const double middle = place.isLeft ? bar.x + fromSide : bar.maxX() - fromSide;
  return {static_cast<int>(std::lround(middle - width / 2)),
          static_cast<int>(std::lround(bar.y + (bar.height - height) / 2)),
          static_cast<int>(std::lround(width)), static_cast<int>(std::lround(height))};
}

// Between the edges of the frame, above the client.
PixelRect titleArea(const WindowFacts& window) {
  const auto& content = window.content;
  const int edge = content.x - window.outerCorner.x;
  const int top = window.outerCorner.y + edge;
  return {content.x, top, content.width, content.y - top};
}

PixelRect headerBarArea(const WindowFacts& window, bool hasShadow, double scale) {
  const bool hasEdge = !hasShadow && !window.state.isExpanded();
  const int edge = hasEdge ? static_cast<int>(std::lround(headerBarEdge * scale)) : 0;
  return {window.frame.x + edge, window.frame.y + edge, window.frame.width - 2 * edge,
          static_cast<int>(std::lround(headerBarHeight * scale))};
}

// An application may leave out buttons of the layout and put its own in their place: then nobody
// can tell which is which.
std::optional<PixelRect> toldAt(const HeaderBars::Buttons& told, const Bar& bar,
                                const ButtonLayout& layout, const ButtonPlace& place) {
  const auto& buttons = place.isLeft ? told.left : told.right;
  const int expected = bar.numberShown(place.isLeft ? layout.left : layout.right);
  if (std::ssize(buttons) != expected) return std::nullopt;
  return buttons[static_cast<std::size_t>(place.number)];
}

// GTK gives dialogs no minimize button, and hides header bars of full-screen windows.
bool showsButtons(const WindowFacts& window) {
  return window.kind == WindowKind::standard && !window.state.fullScreen;
}

bool isResizable(const XProperty& sizes) {
  constexpr std::uint32_t hasLimits = 16 | 32;  // a least size and a largest one
  constexpr std::size_t least = 5;
  constexpr std::size_t largest = 7;
  const auto words = sizes.words();
  if (words.size() < largest + 2 || (words[0] & hasLimits) != hasLimits) return true;
  return words[least] != words[largest] || words[least + 1] != words[largest + 1];
}

// GTK leaves these marks on windows, and asks for no decoration for those with a header bar.
bool hasHeaderBar(const XProperty& hints, const XProperty& variant, bool hasShadow) {
  constexpr std::uint32_t saysDecorations = 2;
  const auto words = hints.words();
  const bool wantsNone = words.size() >= 3 && (words[0] & saysDecorations) && words[2] == 0;
  return wantsNone && (variant.exists() || hasShadow);
}

}  // namespace

std::optional<PixelRect> TitleBars::minimizeButton(xcb_window_t client, Deadline deadline) {
  auto& connection = server_.connection();
  const auto& atoms = server_.atoms();
  WindowLook pendingLook(server_, connection, client, Facet::frame | Facet::state | Facet::kind);
  auto pendingActions = connection.property(client, atoms.netWMAllowedActions);
  auto pendingHints = connection.property(client, atoms.motifWMHints);
  auto pendingVariant = connection.property(client, atoms.gtkThemeVariant);
  auto pendingShadow = connection.property(client, atoms.gtkFrameExtents);
  auto pendingApplication = connection.property(client, atoms.gtkApplicationId);
  auto pendingSizes = connection.property(client, XCB_ATOM_WM_NORMAL_HINTS);
  const auto window = pendingLook.collect(deadline);
  const auto actions = pendingActions.collect(deadline);
  const auto hints = pendingHints.collect(deadline);
  const auto variant = pendingVariant.collect(deadline);
  const auto shadow = pendingShadow.collect(deadline);
  const auto application = pendingApplication.collect(deadline);
  const auto sizes = pendingSizes.collect(deadline);
  if (!window || !actions || !hints || !variant || !shadow || !application || !sizes)
    return std::nullopt;

  const bool isDecorated = window->outerCorner.y < window->content.y;
  if (!isDecorated && !(hasHeaderBar(*hints, *variant, shadow->exists()) && showsButtons(*window)))
    return std::nullopt;
  const auto area = isDecorated ? titleArea(*window)
                                : headerBarArea(*window, shadow->exists(), server_.layout().scale);
  const auto& style = isDecorated ? styleOf(server_.windowManager().titleBar) : headerBar;
  // The window manager may find a window too large to be maximized, but GTK does not.
  const bool canBeMaximized = isDecorated ? actions->contains(atoms.netWMActionMaximizeHorz) ||
                                                actions->contains(atoms.netWMActionMaximizeVert)
                                          : isResizable(*sizes);
  const Bar bar{server_, client, area, *actions, canBeMaximized, deadline};
  if (!bar.shows(TitleButton::minimize)) return std::nullopt;
  const auto layout = layoutOf(style, deadline);
  if (style.buttonWindow) {
    const auto button = style.buttonWindow(bar, layout);
    if (!button || !button->isShown) return std::nullopt;
    const auto place = placeOf(server_, button->window, deadline);
    return place ? std::optional(*place) : std::nullopt;
  }
  const auto place = bar.minimizePlace(layout);
  if (!place) return std::nullopt;
  if (isDecorated) return paintedAt(area, *place, style.pitch);
  if (const auto told = headerBars_.buttons(*window, deadline))
    return toldAt(*told, bar, layout, *place);
  if (layout.isThemed || !application->exists()) return std::nullopt;
  return usuallyAt(area, *place, server_.layout().scale);
}

ButtonLayout TitleBars::layoutOf(const TitleBarStyle& style, Deadline deadline) {
  constexpr Seconds lifetime = 5;
  {
    const std::lock_guard lock(mutex_);
    const auto& reading = readings_[&style];
    if (!hasPassed(reading.expiry)) return reading.layout;
  }
  auto layout = style.readLayout(server_, deadline);
  const bool isInTime = !hasPassed(deadline);
  const std::lock_guard lock(mutex_);
  auto& reading = readings_[&style];
  if (isInTime) reading = {std::move(layout), deadlineIn(lifetime)};
  return reading.layout;
}

}  // namespace pellow
