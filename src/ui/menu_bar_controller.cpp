#include "ui/menu_bar_controller.h"

#include <fmt/format.h>

#include <string>
#include <utility>

#include "platform/event_monitors.h"
#include "ui/privacy_settings.h"

namespace pellow {
namespace {

MenuItem separator() { return {.isSeparator = true}; }

Alert rescueAlert(int rescued) {
  if (rescued == 0)
    return {.messageText = "No hidden windows found",
            .informativeText = "Every window is already somewhere you can see it.",
            .buttons = {"OK"}};
  return {.messageText = fmt::format("Brought back {} window{}", rescued, rescued == 1 ? "" : "s"),
          .informativeText = "They were moved onto the main display.",
          .buttons = {"OK"}};
}

}  // namespace

MenuBarController::MenuBarController(const Surroundings& surroundings)
    : around_(surroundings),
      statusItem_(around_.statusBar.makeStatusItem()),
      updates_(
          around_.notifications.observe(Updater::stateDidChange, [this] { refreshStatusItem(); })),
      rescue_([this](std::exception_ptr) {
        around_.log.error("Hidden windows could not be brought back");
      }) {
  refreshStatusItem();
  statusItem_->setMenu([this] { return menu(); });
}

void MenuBarController::refreshStatusItem() {
  const auto& pending = around_.updater.pendingVersion();
  statusItem_->setImage({.symbol = "sidebar.trailing",
                         .isBadged = pending.has_value(),
                         .accessibilityDescription = "Pellow"});
  statusItem_->setTooltip(pending ? fmt::format("Pellow {} is available", *pending) : "");
}

std::vector<MenuItem> MenuBarController::itemsToOfferElsewhere() {
  return statusItem_->isShown() ? std::vector<MenuItem>{} : menu().items;
}

Menu MenuBarController::menu() {
  Menu menu;
  addWarnings(menu);
  addActions(menu);
  addProgram(menu);
  return menu;
}

// What needs attention.
void MenuBarController::addWarnings(Menu& menu) {
  const auto add = [&](MenuItem item) {
    menu.items.push_back(std::move(item));
    menu.items.push_back(separator());
  };
  if (!around_.accessibility.isProcessTrusted())
    add({.title = "Accessibility permission required",
         .image = MenuSymbol{"exclamationmark.triangle.fill"},
         .onChosen = [this] { around_.workspace.open(PrivacySettings::accessibility); }});
  if (around_.preferences.value(preference::useThumbnails) &&
      !around_.screenCapture.preflightAccess())
    add({.title = std::string(around_.texts.screenRecordingOff),
         .tooltip = std::string(around_.texts.screenRecordingLost),
         .image = MenuSymbol{"exclamationmark.triangle"},
         .onChosen = [this] { around_.workspace.open(PrivacySettings::screenRecording); }});
  if (const auto& pending = around_.updater.pendingVersion())
    add({.title = fmt::format("Update to Pellow {}…", *pending),
         .image = MenuSymbol{"arrow.down.circle.fill"},
         .onChosen = [this] { around_.updater.checkForUpdates(); }});
}

void MenuBarController::addActions(Menu& menu) {
  auto restoreAll = actionItem("Restore All Tabs", ShortcutAction::restoreAll);
  restoreAll.isEnabled = !around_.controller.store().tabs().empty();
  auto floatAbove = actionItem("Keep Tabs Above Other Windows", ShortcutAction::toggleFloatAbove);
  floatAbove.isChecked = around_.preferences.value(preference::floatAboveWindows);
  floatAbove.tooltip =
      "Turn this off and tabs sit at desktop level, so they appear when the desktop does and never "
      "cover an app.";
  for (auto& item : {actionItem("Pellow Frontmost Window", ShortcutAction::pellowFrontmost),
                     actionItem("Focus: Pellow Everything Else", ShortcutAction::focusMode),
                     actionItem("Pellow All Pinned Apps", ShortcutAction::pellowPinned),
                     actionItem("Pellow Everything", ShortcutAction::pellowAll), restoreAll,
                     separator(), floatAbove, separator()})
    menu.items.push_back(item);
}

void MenuBarController::addProgram(Menu& menu) {
  const auto add = [&](MenuItem item) { menu.items.push_back(std::move(item)); };
  add({.title = "Bring Back Hidden Windows…",
       .tooltip =
           "Finds any window you can no longer see and puts it back on screen, whether Pellow hid "
           "it or not.",
       .onChosen = [this] { rescue_.start(rescueHiddenWindows()); }});
  add(separator());
  add({.title = "Settings…",
       .key = {std::string(around_.texts.settingsKey), modifier::command},
       .onChosen = [this] {
         if (onOpenSettings) onOpenSettings();
       }});
  if (!around_.updater.pendingVersion())
    add({.title = "Check for Updates…", .onChosen = [this] { around_.updater.checkForUpdates(); }});
  add(separator());
  add({.title = "Relaunch Pellow", .onChosen = [this] { around_.relauncher.relaunch(); }});
  add({.title = "Quit Pellow",
       .key = {std::string(around_.texts.quitKey), modifier::command},
       .onChosen = [this] { around_.process.terminate(); }});
}

MenuItem MenuBarController::actionItem(std::string_view title, ShortcutAction action) {
  const auto& shortcut = around_.shortcuts.shortcut(action);
  return {.title = std::string(title),
          .key = {shortcut.characters, shortcut.modifiers},
          .onChosen = [this, action] {
            if (onAction) onAction(action);
          }};
}

Task<> MenuBarController::rescueHiddenWindows() {
  const int rescued = around_.controller.rescueHiddenWindows(/*clearJournal=*/true);
  co_await around_.alerts.present(rescueAlert(rescued));
}

}  // namespace pellow
