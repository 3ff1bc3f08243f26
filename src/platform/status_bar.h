#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/menu.h"

namespace pellow {

// The picture of a status item: a system symbol in the colour of the bar.
struct StatusImage {
  std::string symbol;
  bool isBadged = false;  // a dot over its top right corner
  std::string accessibilityDescription;

  bool operator==(const StatusImage&) const = default;
};

// The program's place in the menu bar; gone when destroyed.
class StatusItem {
 public:
  virtual ~StatusItem() = default;

  virtual void setImage(const StatusImage& image) = 0;
  virtual void setTooltip(const std::string& tooltip) = 0;  // empty: none

  // Asked for the menu each time it is about to open.
  virtual void setMenu(std::function<Menu()> menu) = 0;

  // Whether the system has a place for it now, so that the user can get at the menu.
  virtual bool isShown() const = 0;
};

// Main thread.
class StatusBar {
 public:
  virtual ~StatusBar() = default;

  virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
};

}  // namespace pellow
