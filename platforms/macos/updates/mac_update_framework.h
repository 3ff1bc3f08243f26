#pragma once

#import <Foundation/Foundation.h>

#include <memory>

#include "base/log.h"
#include "platform/update_framework.h"

@class PellowSparkleDelegate;
@protocol PellowSparkleController;

namespace pellow {

class Foreground;

// Sparkle, if its framework is in the bundle and the bundle names a feed; else there are no
// updates, and the log says why. The log outlives this.
class MacUpdateFramework final : public UpdateFramework {
 public:
  MacUpdateFramework(const Log& log, std::shared_ptr<Foreground> foreground);
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
  const std::shared_ptr<Foreground> foreground_;
  PellowSparkleDelegate* delegate_ = nil;  // Sparkle keeps it only weakly
  id<PellowSparkleController> controller_ = nil;
};

}  // namespace pellow
