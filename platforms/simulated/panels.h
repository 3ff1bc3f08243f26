#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/panels.h"
#include "platforms/simulated/queues.h"
#include "platforms/simulated/system.h"
#include "views/panel_motion.h"
#include "views/panel_pointer.h"
#include "views/view_tree.h"

namespace pellow::simulated {

class OpenMenu;
class Panels;

using PanelID = int;
constexpr PanelID noPanel = 0;

// A panel as data.
class Panel final : public pellow::Panel {
 public:
  Panel(Panels& panels, PanelID id, std::string name, WindowShadow shadow);
  ~Panel() override;

  void setContent(const View& root) override;
  void setFrame(const AppKitRect& frame) override;
  AppKitRect frame() const override { return motion_.target().frame; }
  void animate(const AppKitRect& frame, double opacity, Seconds duration, AnimationTiming timing,
               std::function<void()> onDone) override;
  void setLevel(PanelLevel level) override;
  void setIgnoresMouseEvents(bool ignores) override;
  void orderFront() override;
  void orderOut() override;
  bool isVisible() const override { return isVisible_; }

  PanelID id() const { return id_; }
  const std::string& name() const { return name_; }
  WindowShadow shadow() const { return shadow_; }
  PanelLevel level() const { return level_; }
  bool ignoresMouseEvents() const { return ignoresMouseEvents_; }
  PanelPointer& pointer() { return pointer_; }

  // While an animation runs: where the panel is and how opaque at this moment. Otherwise `frame`,
  // and the opacity that the last animation was to end with; a panel begins with 1.
  AppKitRect frameNow() const { return motion_.at(progress()).frame; }
  double opacityNow() const { return motion_.at(progress()).opacity; }

  // The view at a path of keys below the root, for example "list/tab-1"; none when there is none.
  const ViewNode* view(std::string_view path) const;
  // The first view, from the back to the front, with this accessible name.
  const ViewNode* viewNamed(std::string_view accessibleName) const;
  // Where the middle of the view at a path is on the screen; throws when there is none.
  AppKitPoint centre(std::string_view path) const;
  // Of the topmost view there that has one.
  void openContextMenu(OpenMenu& menu, AppKitPoint at);
  // A point of the screen in the panel's content.
  ViewPoint toContent(AppKitPoint onScreen) const;

 private:
  struct Animation {
    Seconds start;
    Seconds duration;
    AnimationTiming timing;
    Subscription end;
  };

  double progress() const;
  void arrive();

  Panels& panels_;
  PanelID id_;
  std::string name_;
  WindowShadow shadow_;
  ViewTree tree_;
  PanelPointer pointer_{tree_};
  Subscription contextMenu_;
  PanelMotion motion_;
  std::optional<Animation> animation_;
  PanelLevel level_ = PanelLevel::statusWindow;
  bool isVisible_ = false;
  bool ignoresMouseEvents_ = false;
};

// The panels of the program, and the pointer over them. The pointer meets things where they are at
// the moment, even in the middle of an animation. While a button pressed over a panel is held down,
// the pointer belongs to that panel.
class Panels final : public pellow::Panels {
 public:
  explicit Panels(System& system) : system_(system), queue_(system) {}

  std::unique_ptr<pellow::Panel> makePanel(std::string name, WindowShadow shadow) override;

  // The visible ones of this name, front to back; none once the process has ended.
  std::vector<const Panel*> visible(std::string_view name) const;
  // The only one of them; throws when there is none, or more.
  const Panel& panel(std::string_view name) const;

  // The panel that a click there would meet; none if no panel there is in front of every window.
  // Panels that ignore the pointer do not count.
  Panel* panelAt(AppKitPoint point) const;
  // None once it is gone or hidden.
  const Panel* withID(PanelID id) const;

  // The pointer moves to where the state says it is: a drag goes on, or views are left and entered.
  void pointerMoved();
  // The primary button, where the pointer is. Pressing answers false when no panel is there.
  bool press();
  void release();
  // A click on the view at a path of keys, wherever it lies, in the front panel of the name that
  // has one; throws when there is none.
  void clickView(const std::string& panelName, const std::string& path);

 private:
  friend class Panel;

  Panel* find(PanelID id) const;
  // The front panel of this name with a view there that can be clicked.
  Panel* clickable(const std::string& name, const std::string& path) const;
  void updateHover();
  void goOver(PanelID panel);
  void changed();
  void toFront(Panel& panel);
  void forgetPress(const Panel& panel);
  void remove(const Panel& panel);

  System& system_;
  MainQueue queue_;
  std::vector<Panel*> frontToBack_;
  PanelID hovered_ = noPanel;
  PanelID pressed_ = noPanel;
  PanelID lastID_ = noPanel;
  Subscription pendingUpdate_;
};

}  // namespace pellow::simulated
