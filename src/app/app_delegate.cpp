#include "app/app_delegate.h"

#include <string>
#include <utility>

#include "app/accessibility_permission.h"
#include "shortcuts/system_shortcuts.h"
#include "ui/launch_at_login.h"
#include "ui/privacy_settings.h"

namespace pellow {
namespace {

Alert permissionAlert(std::string messageText, const Text& informativeText, const Texts& texts) {
  return {.style = AlertStyle::informational,
          .messageText = std::move(messageText),
          .informativeText = std::string(informativeText),
          .buttons = {std::string(texts.openSystemSettings), "Later"}};
}

}  // namespace

AppDelegate::AppDelegate(Platform& platform)
    : platform_(platform),
      preferences_(platform.userDefaults(), notifications_),
      zones_(platform.userDefaults(), preferences_, notifications_, platform.uuidSource()),
      shortcuts_(platform.userDefaults(), notifications_),
      tabs_(notifications_, platform.workspace()),
      displays_(platform.screens()),
      alerts_(platform.alerts()),
      animator_(platform.panels(), preferences_, platform.queues().main()),
      strips_({.tabs = tabs_,
               .zones = zones_,
               .preferences = preferences_,
               .clock = platform.clock(),
               .mainQueue = platform.queues().main(),
               .screens = platform.screens(),
               .panels = platform.panels(),
               .pointer = platform.eventMonitors(),
               .colourPanel = platform.colourPanel(),
               .systemColours = platform.systemColours(),
               .notifications = notifications_}),
      controller_({.accessibility = platform.accessibility(),
                   .alerts = alerts_,
                   .animator = animator_,
                   .clock = platform.clock(),
                   .displays = displays_,
                   .log = platform.log(),
                   .notifications = notifications_,
                   .preferences = preferences_,
                   .queues = platform.queues(),
                   .screenCapture = platform.screenCapture(),
                   .screens = platform.screens(),
                   .strips = strips_,
                   .tabs = tabs_,
                   .texts = platform.texts(),
                   .userDefaults = platform.userDefaults(),
                   .uuids = platform.uuidSource(),
                   .workspace = platform.workspace(),
                   .zones = zones_,
                   .ownProcess = platform.process().pid()}),
      palette_({.mainQueue = platform.queues().main(),
                .monitors = platform.eventMonitors(),
                .panels = platform.panels(),
                .preferences = preferences_,
                .screens = platform.screens(),
                .workspace = platform.workspace(),
                .zones = zones_}),
      hoverTrigger_({.accessibility = platform.accessibility(),
                     .clock = platform.clock(),
                     .displays = displays_,
                     .log = platform.log(),
                     .monitors = platform.eventMonitors(),
                     .queues = platform.queues(),
                     .ownProcess = platform.process().pid()}),
      hotkeys_(platform.eventMonitors(), shortcuts_, platform.log()),
      settingsSync_({.files = platform.files(),
                     .log = platform.log(),
                     .mainQueue = platform.queues().main(),
                     .notifications = notifications_,
                     .preferences = preferences_,
                     .shortcuts = shortcuts_,
                     .texts = platform.texts(),
                     .zones = zones_}),
      relauncher_(platform.process(), platform.log()),
      permissionAlert_([this](std::exception_ptr) {
        platform_.log().error("The explanation of a permission could not be shown");
      }) {
  platform_.process().becomeAccessory();
  connectStrips();
  connectPalette();
}

void AppDelegate::connectStrips() {
  using Tabs = std::vector<UUID>;
  strips_.onActivate = [this](const Tabs& tabs) { controller_.restore(tabs); };
  strips_.onPellowRest = [this](UUID tab, UUID zone) {
    if (const auto* const of = tabs_.tab(tab)) controller_.pellowApp(of->window, zone);
  };
  strips_.onSetSize = [this](const Tabs& tabs, auto size) { tabs_.setSize(size, tabs); };
  strips_.onSetShowsTitle = [this](const Tabs& tabs, auto shows) {
    tabs_.setShowsTitle(shows, tabs);
  };
  strips_.onSetZone = [this](const Tabs& tabs, UUID zone) { tabs_.setZone(zone, tabs); };
  strips_.onGatherPinned = [this](const std::string& bundleID, UUID zone) {
    tabs_.setZone(zone, tabs_.idsOf(bundleID));
  };
  strips_.onMove = [this](UUID id, ZonePosition position, auto snap, auto display) {
    zones_.change(id, [&](TabZone& zone) {
      zone.position = position;
      zone.snap = snap;
      zone.displayID = display;
    });
  };
}

void AppDelegate::connectPalette() {
  hoverTrigger_.onEnter = [this](const TargetWindow& window, const AppKitRect& button) {
    palette_.show(window, button);
    hoverTrigger_.protectedRect = palette_.protectedRect();
  };
  hoverTrigger_.onExit = [this] { palette_.scheduleHide(); };
  hoverTrigger_.onWindowUnderCursor = [this](const TargetWindow& window) {
    controller_.cacheSnapshot(window);
  };
  palette_.onHidden = [this] { hoverTrigger_.reset(); };
  palette_.onOpenSettings = [this] { showSettings(); };
  palette_.onPellowWindow = [this](const TargetWindow& window, UUID zone) {
    controller_.pellow(window, zone);
  };
  palette_.onPellowApp = [this](const TargetWindow& window, UUID zone) {
    controller_.pellowApp(window, zone);
  };
  // By whatever means its window goes.
  tabChanges_ = notifications_.observe(TabStore::didChange, [this] {
    if (palette_.window() && tabs_.contains(*palette_.window())) palette_.hideImmediately();
  });
}

void AppDelegate::makeUpdater() {
  updater_.emplace(platform_.updateFramework(), notifications_, platform_.log());
  updater_->onWillRelaunch = [this] { controller_.restoreAllBlocking(); };
}

void AppDelegate::makeMenuBar() {
  menuBar_.emplace(MenuBarController::Surroundings{.accessibility = platform_.accessibility(),
                                                   .alerts = alerts_,
                                                   .controller = controller_,
                                                   .log = platform_.log(),
                                                   .notifications = notifications_,
                                                   .preferences = preferences_,
                                                   .process = platform_.process(),
                                                   .relauncher = relauncher_,
                                                   .screenCapture = platform_.screenCapture(),
                                                   .shortcuts = shortcuts_,
                                                   .statusBar = platform_.statusBar(),
                                                   .texts = platform_.texts(),
                                                   .updater = *updater_,
                                                   .workspace = platform_.workspace()});
  menuBar_->onOpenSettings = [this] { showSettings(); };
  menuBar_->onAction = [this](ShortcutAction action) { perform(action); };
  strips_.moreZoneItems = [this] { return menuBar_->itemsToOfferElsewhere(); };
}

void AppDelegate::applicationDidFinishLaunching() {
  makeUpdater();
  makeMenuBar();
  if (platform_.accessibility().isProcessTrusted()) {
    begin();
  } else {
    promptForPermission();
  }
}

// The grant counts as soon as it is given, whether or not the alert was answered.
void AppDelegate::promptForPermission() {
  platform_.accessibility().isProcessTrustedWithPrompt();
  grantPoll_ = AccessibilityPermission::waitForGrant(
      platform_.accessibility(), platform_.queues().main(), 1.0, [this] { permissionGranted(); });
  permissionAlert_.start(
      explainPermission(permissionAlert("Pellow needs Accessibility permission",
                                        platform_.texts().accessibilityNeeded, platform_.texts()),
                        PrivacySettings::accessibility));
}

void AppDelegate::permissionGranted() {
  grantPoll_.cancel();
  permissionAlert_.cancel();
  begin();
}

Task<> AppDelegate::explainPermission(Alert alert, std::string_view settings) {
  if (co_await alerts_.present(std::move(alert)) == 0) platform_.workspace().open(settings);
}

void AppDelegate::begin() {
  displays_.recordMainHeight();
  const auto recovered = controller_.recoverStrandedWindows();
  if (recovered > 0)
    platform_.log().info("Recovered {} window(s) stranded by a previous run", recovered);
  logPermissions();
  strips_.start();
  controller_.start();
  hoverTrigger_.start();
  installHotkeys();
  installTerminationSignalHandlers();
  settingsSync_.start();
  checkScreenRecordingIfNeeded();
  introduce();
}

void AppDelegate::checkScreenRecordingIfNeeded() {
  auto& screenCapture = platform_.screenCapture();
  if (!preferences_.value(preference::useThumbnails)) return;
  if (screenCapture.preflightAccess()) return;
  screenCapture.requestAccess();
  permissionAlert_.start(
      explainPermission(permissionAlert("Pellow needs Screen Recording permission",
                                        platform_.texts().screenRecordingNeeded, platform_.texts()),
                        PrivacySettings::screenRecording));
}

void AppDelegate::logPermissions() {
  platform_.log().standard(
      "Permissions at launch: accessibility={} screenRecording={} snapshotsEnabled={}",
      platform_.accessibility().isProcessTrusted(), platform_.screenCapture().preflightAccess(),
      preferences_.value(preference::useThumbnails));
}

void AppDelegate::installHotkeys() {
  hotkeys_.handler = [this](ShortcutAction action) { perform(action); };
  hotkeys_.start();
  warnOfSharedShortcuts();
}

void AppDelegate::warnOfSharedShortcuts() {
  for (const auto action : allCases<ShortcutAction>()) {
    const auto& shortcut = shortcuts_.shortcut(action);
    const auto owner = SystemShortcuts::conflictDescription(platform_.symbolicHotKeys(), shortcut,
                                                            platform_.texts());
    if (owner)
      platform_.log().warning("{} belongs to {} too: both will act on it",
                              shortcut.display(platform_.texts()), *owner);
  }
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

void AppDelegate::sessionWillBeSaved() {
  platform_.log().info("The session is being saved; restoring pellowed windows");
  controller_.restoreAllAndGoOn();
}

void AppDelegate::applicationWillTerminate() {
  hoverTrigger_.stop();
  controller_.restoreAllBlocking();
  hotkeys_.stop();
  settingsSync_.stop();
}

void AppDelegate::perform(ShortcutAction action) {
  // A menu may come before the next poll.
  if (grantPoll_ && platform_.accessibility().isProcessTrusted()) permissionGranted();
  switch (action) {
    case ShortcutAction::pellowFrontmost:
      return controller_.pellowFrontmost();
    case ShortcutAction::toggleFloatAbove:
      return toggleFloatAbove();
    case ShortcutAction::restoreAll:
      return controller_.restoreAll();
    case ShortcutAction::pellowPinned:
      return controller_.pellowPinnedApps();
    case ShortcutAction::pellowAll:
      return controller_.pellowEverything();
    case ShortcutAction::focusMode:
      return controller_.enterFocusMode();
  }
}

void AppDelegate::toggleFloatAbove() {
  preferences_.set(preference::floatAboveWindows,
                   !preferences_.value(preference::floatAboveWindows));
}

void AppDelegate::showSettings() {
  if (!settings_) makeSettings();
  settings_->setSyncStatus(settingsSync_.status());
  settings_->present();
}

void AppDelegate::makeSettings() {
  settings_.emplace(
      SettingsWindowController::Surroundings{.accessibility = platform_.accessibility(),
                                             .alerts = alerts_,
                                             .eventMonitors = platform_.eventMonitors(),
                                             .formWindows = platform_.formWindows(),
                                             .log = platform_.log(),
                                             .loginItem = platform_.loginItem(),
                                             .mainQueue = platform_.queues().main(),
                                             .notifications = notifications_,
                                             .preferences = preferences_,
                                             .screenCapture = platform_.screenCapture(),
                                             .shortcuts = shortcuts_,
                                             .symbolicHotKeys = platform_.symbolicHotKeys(),
                                             .tabs = tabs_,
                                             .texts = platform_.texts(),
                                             .updates = platform_.updateFramework(),
                                             .workspace = platform_.workspace(),
                                             .zones = zones_});
  settings_->onCheckForUpdates = [this] { updater_->checkForUpdates(); };
  settings_->onSetLaunchAtLogin = [this](bool enabled) {
    LaunchAtLogin::set(platform_.loginItem(), platform_.log(), enabled);
  };
  settings_->onRelaunch = [this] { relauncher_.relaunch(); };
}

// Where nothing else tells a new user what to do first, the settings window does, once.
void AppDelegate::introduce() {
  if (platform_.texts().firstMinute.empty() || !zones_.isNew()) return;
  if (preferences_.value(preference::firstMinuteShown)) return;
  preferences_.set(preference::firstMinuteShown, true);
  showSettings();
}

}  // namespace pellow
