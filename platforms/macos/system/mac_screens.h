#pragma once

#include "base/handler_list.h"
#include "platform/screens.h"

namespace pellow {

// The screens of AppKit, read anew each time: its objects are exchanged with every change.
class MacScreens final : public Screens {
 public:
  MacScreens();

  std::vector<Screen> all() const override;
  std::optional<Screen> main() const override;
  bool areLocked() const override;
  Subscription onDidChangeParameters(std::function<void()> observer) override;

 private:
  void parametersChanged();

  std::vector<Screen> known_;
  HandlerList<void()> observers_;
  Subscription changes_;
};

}  // namespace pellow
