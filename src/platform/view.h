#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/geometry.h"
#include "platform/image.h"
#include "platform/menu.h"
#include "platform/paint.h"

// The insides of a panel as data. A platform compares a new tree with the one it shows, by key, and
// changes only what differs, so that hover, drag and focus survive.

namespace pellow {

// A picture, scaled to the view's frame with its proportions kept.
struct Picture {
  Image image;

  bool operator==(const Picture&) const = default;
};

// A system symbol by its name, for example "pin.fill", drawn in one colour.
struct Symbol {
  std::string name;
  Paint paint;

  bool operator==(const Symbol&) const = default;
};

enum class TextAlignment { left, centre };
enum class FontWeight { regular, medium };

// One line in the system font, centred vertically and cut with an ellipsis where it does not fit.
struct Label {
  std::string text;
  double pointSize = 11;
  Paint paint = SystemColour::label;
  TextAlignment alignment = TextAlignment::left;
  FontWeight weight = FontWeight::regular;

  bool operator==(const Label&) const = default;
};

// A flat colour.
struct Fill {
  Paint paint;

  bool operator==(const Fill&) const = default;
};

// The translucent material that strips stand on.
struct Backdrop {
  bool operator==(const Backdrop&) const = default;
};

using ViewContent = std::variant<std::monostate, Picture, Symbol, Label, Fill, Backdrop>;

struct Shadow {
  double opacity = 0;  // of black
  double blurRadius = 0;
  double dx = 0;
  double dy = 0;  // y up

  bool operator==(const Shadow&) const = default;
};

struct ViewLook {
  ViewContent content;
  double cornerRadius = 0;       // points; clips the content
  double rotation = 0;           // degrees counter-clockwise about the centre
  std::optional<Shadow> shadow;  // of the content's shape
  bool highlightsOnHover = false;
  std::string tooltip;
  std::string accessibleName;  // empty: the view is decoration; the root's is the panel's, too

  bool operator==(const ViewLook&) const = default;
};

// A drag that began with a press of the primary button inside a view, where no view with a click
// stands in front of it. It goes on wherever the pointer goes and whatever becomes of the view and
// the content, with the callbacks the view had at the press. Hiding the panel ends it at once; so
// does the panel's end, but without `onEnded`.
struct DragActions {
  std::function<void()> onBegan;                        // 3 points away from the press
  std::function<void(AppKitVector movedBy)> onDragged;  // since the press, on the screen
  std::function<void()> onEnded;                        // the button was released

  explicit operator bool() const { return onBegan || onDragged || onEnded; }
};

// What a view does. Main thread; a callback may replace the content of its own panel. An action it
// lacks goes to the view it stands on, except a drag when it has a click: that stays one however
// far the pointer wobbles.
struct ViewActions {
  std::function<void()> onClick;  // pressed and released inside, without a drag

  // Views are left from the inside out, then others are entered. Not while a drag runs or a context
  // menu of the panel is open; a view that is taken away is not told.
  std::function<void(bool inside)> onHoverChanged;

  DragActions drag;

  // Asked for at every secondary click, unless the primary button is down. Until the menu has
  // closed and what was chosen from it is done, all views of the panel stay hovered or not as they
  // are, wherever the pointer goes; then it is looked for.
  std::function<Menu()> contextMenu;
};

struct View;

// A view that is kept from one tree to the next. As it never changes, a platform that shows it
// already looks at its place only, whatever it holds.
struct KeptView {
  ViewPoint origin;  // in the parent view; its frame gives the size
  std::shared_ptr<const View> view;
};

struct View {
  std::string key;  // unique among its siblings and stable from one tree to the next
  ViewRect frame;   // in the parent view
  ViewLook look;
  ViewActions actions;
  std::vector<View> children;  // the later above the earlier
  std::vector<KeptView> kept;  // above the children, likewise
};

}  // namespace pellow
