#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/subscription.h"
#include "platform/status_bar.h"

namespace pellow::simulated {

class OpenMenu;
class StatusBar;
class System;

// A status item as data.
class StatusItem final : public pellow::StatusItem {
 public:
  explicit StatusItem(StatusBar& bar);
  ~StatusItem() override;

  void setImage(const StatusImage& image) override { image_ = image; }
  void setTooltip(const std::string& tooltip) override { tooltip_ = tooltip; }
  void setMenu(std::function<Menu()> menu) override { menu_ = std::move(menu); }
  bool isShown() const override;

  const std::optional<StatusImage>& image() const { return image_; }
  const std::string& tooltip() const { return tooltip_; }
  const std::function<Menu()>& menu() const { return menu_; }

 private:
  StatusBar& bar_;
  std::optional<StatusImage> image_;
  std::string tooltip_;
  std::function<Menu()> menu_;
};

class StatusBar final : public pellow::StatusBar {
 public:
  StatusBar(System& system, OpenMenu& menu) : system_(system), menu_(menu) {}

  std::unique_ptr<pellow::StatusItem> makeStatusItem() override;

  // Whether the desktop has a place for items, as it has at first.
  void setHasPlace(bool hasPlace) { hasPlace_ = hasPlace; }
  // The program's only item; throws when there is none, or more.
  const StatusItem& item() const;
  // A click on it, as an event: asks for the menu and opens it.
  void openMenu();

 private:
  friend class StatusItem;

  System& system_;
  OpenMenu& menu_;
  bool hasPlace_ = true;
  std::vector<StatusItem*> items_;
  Subscription opened_;
};

}  // namespace pellow::simulated
