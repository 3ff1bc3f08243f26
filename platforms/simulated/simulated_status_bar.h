#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/status_bar.h"

namespace pellow::simulated {

class SimulatedMenu;
class SimulatedStatusBar;
class SimulatedSystem;

// A status item as data.
class SimulatedStatusItem final : public StatusItem {
 public:
  explicit SimulatedStatusItem(SimulatedStatusBar& bar);
  ~SimulatedStatusItem() override;

  void setImage(const StatusImage& image) override { image_ = image; }
  void setTooltip(const std::string& tooltip) override { tooltip_ = tooltip; }
  void setMenu(std::function<Menu()> menu) override { menu_ = std::move(menu); }

  const std::optional<StatusImage>& image() const { return image_; }
  const std::string& tooltip() const { return tooltip_; }
  const std::function<Menu()>& menu() const { return menu_; }

 private:
  SimulatedStatusBar& bar_;
  std::optional<StatusImage> image_;
  std::string tooltip_;
  std::function<Menu()> menu_;
};

class SimulatedStatusBar final : public StatusBar {
 public:
  SimulatedStatusBar(SimulatedSystem& system, SimulatedMenu& menu) : system_(system), menu_(menu) {}

  std::unique_ptr<StatusItem> makeStatusItem() override;

  // The program's only item; throws when there is none, or more.
  const SimulatedStatusItem& item() const;
  // A click on it, as an event: asks for the menu and opens it.
  void openMenu();

 private:
  friend class SimulatedStatusItem;

  SimulatedSystem& system_;
  SimulatedMenu& menu_;
  std::vector<SimulatedStatusItem*> items_;
};

}  // namespace pellow::simulated
