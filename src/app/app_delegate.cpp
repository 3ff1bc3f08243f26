#include "app/app_delegate.h"

#include "app/accessibility_permission.h"

namespace pellow {

AppDelegate::AppDelegate(Platform& platform)
    : platform_(platform),
      preferences_(platform.userDefaults(), notifications_),
      zones_(platform.userDefaults(), notifications_, platform.uuidSource()),
      shortcuts_(platform.userDefaults(), notifications_),
      alerts_(platform.alerts(), platform.process()),
      controller_({.accessibility = platform.accessibility(),
                   .alerts = alerts_,
                   .clock = platform.clock(),
                   .log = platform.log(),
                   .notifications = notifications_,
                   .panels = platform.panels(),
                   .preferences = preferences_,
                   .queues = platform.queues(),
                   .screens = platform.screens(),
                   .userDefaults = platform.userDefaults(),
                   .uuids = platform.uuidSource(),
                   .workspace = platform.workspace(),
                   .zones = zones_,
                   .ownProcess = platform.process().pid()}),
      hotkeys_(platform.eventMonitors(), shortcuts_, platform.log()) {
  platform_.process().becomeAccessory();
}

void AppDelegate::applicationDidFinishLaunching() {
  if (platform_.accessibility().isProcessTrusted()) {
    begin();
    return;
  }
  platform_.log().warning("Pellow needs Accessibility permission");
  grantPoll_ = AccessibilityPermission::waitForGrant(
      platform_.accessibility(), platform_.queues().main(), 1.0, [this] { begin(); });
}

void AppDelegate::begin() {
  controller_.displays().recordMainHeight();
  const auto recovered = controller_.parking().recoverStrandedWindows();
  if (recovered > 0)
    platform_.log().info("Recovered {} window(s) stranded by a previous run", recovered);
  logPermissions();
  controller_.start();
  installHotkeys();
  installTerminationSignalHandlers();
}

void AppDelegate::logPermissions() {
  platform_.log().standard(
      "Permissions at launch: accessibility={} screenRecording={} snapshotsEnabled={}",
      platform_.accessibility().isProcessTrusted(), platform_.screenCapture().preflightAccess(),
      boolean(platform_.userDefaults(), preference::useThumbnails));
}

void AppDelegate::installHotkeys() {
  hotkeys_.handler = [this](ShortcutAction action) { perform(action); };
  hotkeys_.start();
}

void AppDelegate::installTerminationSignalHandlers() {
  for (const auto signal :
       {TerminationSignal::terminate, TerminationSignal::interrupt, TerminationSignal::hangUp}) {
    signalSources_.push_back(platform_.process().onSignal(signal, [this] {
      platform_.log().info("Caught termination signal; restoring parked windows");
      controller_.restoreAllBlocking();
      platform_.process().exit(0);
    }));
  }
}

void AppDelegate::applicationWillTerminate() {
  controller_.restoreAllBlocking();
  hotkeys_.stop();
}

void AppDelegate::perform(ShortcutAction action) {
  switch (action) {
    case ShortcutAction::pellowFrontmost:
      return controller_.pellowFrontmost();
    case ShortcutAction::toggleFloatAbove:
      return toggleFloatAbove();
    case ShortcutAction::restoreAll:
      return controller_.restoreAll();
    case ShortcutAction::pellowPinned:
    case ShortcutAction::pellowAll:
    case ShortcutAction::focusMode:
      platform_.log().warning("{} is not part of this version yet", rawValue(action));
  }
}

void AppDelegate::toggleFloatAbove() {
  auto& defaults = platform_.userDefaults();
  // Written eventually; what cannot be kept is told by the store of the defaults itself.
  (void)defaults.set(preference::floatAboveWindows,
                     !boolean(defaults, preference::floatAboveWindows));
  notifications_.post(Preferences::didChange);
}

}  // namespace pellow
