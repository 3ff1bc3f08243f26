#pragma once

#import <Foundation/Foundation.h>

#include "base/log.h"
#include "platform/update_framework.h"

@class PellowSparkleDelegate;
@protocol PellowSparkleController;

namespace pellow {

// Sparkle, if its framework is in the bundle and the bundle names a feed; else there are no
// updates, and the log says why. The log outlives this.
class MacUpdateFramework final : public UpdateFramework {
 public:
  explicit MacUpdateFramework(const Log& log) : log_(log) {}
  ~MacUpdateFramework() override;
  MacUpdateFramework(const MacUpdateFramework&) = delete;
  MacUpdateFramework& operator=(const MacUpdateFramework&) = delete;

  void start(UpdateDelegate delegate) override;
  void checkForUpdates() override;
  bool automaticallyChecks() const override;
  void setAutomaticallyChecks(bool automatically) override;
  std::optional<Seconds> sinceLastCheck() const override;
  std::optional<std::string> currentVersion() const override;

 private:
  const Log& log_;
  PellowSparkleDelegate* delegate_ = nil;  // Sparkle keeps it only weakly
  id<PellowSparkleController> controller_ = nil;
};

}  // namespace pellow
