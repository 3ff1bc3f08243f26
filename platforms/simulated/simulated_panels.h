#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/panels.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

class SimulatedPanels;

// A panel as data.
class SimulatedPanel final : public Panel {
 public:
  SimulatedPanel(SimulatedPanels& panels, std::string name);
  ~SimulatedPanel() override;

  void setContent(const View& root) override;
  void setFrame(const AppKitRect& frame) override;
  AppKitRect frame() const override { return frame_; }
  void setLevel(PanelLevel level) override;
  void orderFront() override;
  void orderOut() override;
  bool isVisible() const override { return isVisible_; }

  const std::string& name() const { return name_; }
  PanelLevel level() const { return level_; }
  const View& content() const { return content_; }

  // The view at a path of keys below the root, for example "list/tab-1"; none when there is none.
  const View* view(std::string_view path) const;
  // The first view, from the back to the front, with this accessible name.
  const View* viewNamed(std::string_view accessibleName) const;

 private:
  SimulatedPanels& panels_;
  std::string name_;
  View content_;
  AppKitRect frame_;
  PanelLevel level_ = PanelLevel::statusWindow;
  bool isVisible_ = false;
};

// The panels of the program, and the pointer over them.
class SimulatedPanels final : public Panels {
 public:
  explicit SimulatedPanels(SimulatedSystem& system) : system_(system) {}

  std::unique_ptr<Panel> makePanel(std::string name) override;

  // The visible ones of this name, front to back; none once the process has ended.
  std::vector<const SimulatedPanel*> visible(std::string_view name) const;

  // The pointer moves to where the state says it is: views are left and entered.
  void updateHover();
  // A click of the primary button; false when no panel stands there in front of every window.
  bool click(AppKitPoint point);
  // A click on the view, wherever it lies. Does nothing when it is gone.
  void clickView(const std::string& panelName, const std::string& path);

 private:
  friend class SimulatedPanel;

  struct Hovered {
    const SimulatedPanel* panel;
    std::string path;
    bool operator==(const Hovered&) const = default;
  };

  const SimulatedPanel* panelAt(AppKitPoint point) const;
  std::vector<Hovered> viewsAt(AppKitPoint point) const;
  void hoverChanged(const Hovered& view, bool inside) const;
  void changed();
  void toFront(SimulatedPanel& panel);
  void remove(const SimulatedPanel& panel);

  SimulatedSystem& system_;
  std::vector<SimulatedPanel*> frontToBack_;
  std::vector<Hovered> hovered_;
  Subscription pendingUpdate_;
};

}  // namespace pellow::simulated
