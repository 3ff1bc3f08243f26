#include "ui/general_pane.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "ui/form_builders.h"
#include "ui/relative_date.h"

namespace pellow {

FormPane GeneralPane::form() const {
  FormPane pane{"General", {}};
  addFirstMinute(pane.elements);
  addMechanism(pane.elements);
  addScope(pane.elements);
  addTriggers(pane.elements);
  addStrip(pane.elements);
  addProgram(pane.elements);
  addUpdates(pane.elements);
  return pane;
}

void GeneralPane::addFirstMinute(Elements& elements) const {
  if (texts.firstMinute.empty()) return;
  const auto keys = [&](ShortcutAction action) {
    return shortcuts.shortcut(action).display(texts);
  };
  elements.push_back(
      form::label("firstMinute",
                  fmt::format(fmt::runtime(std::string_view(texts.firstMinute)),
                              keys(ShortcutAction::pellowFrontmost),
                              keys(ShortcutAction::restoreAll), keys(ShortcutAction::focusMode))));
}

void GeneralPane::addMechanism(Elements& elements) const {
  elements.push_back(form::section("Pellowing"));
  elements.push_back(form::row(
      "When pellowing",
      form::popUpButton(preferences, preference::mechanism,
                        {std::string(texts.minimizeTitle), std::string(texts.offscreenTitle),
                         std::string(texts.hideAppTitle)})));
  elements.push_back(form::note("minimize", texts.minimizeNote));
  if (workspace.keepsWindowsOnDisplays())
    elements.push_back(form::note("offscreen", texts.offscreenIsMinimize));
}

void GeneralPane::addScope(Elements& elements) const {
  const bool hidesApps = preferences.mechanism() == Mechanism::hideApp;
  auto scope = form::popUpButton(preferences, preference::tabScope,
                                 {"One tab per window", "One tab per app"});
  scope.isEnabled = !hidesApps;
  elements.push_back(form::row("Tabs represent", std::move(scope)));
  if (hidesApps)
    elements.push_back(
        form::note("hideApp", "Hiding a whole app can only produce one tab per app."));
}

void GeneralPane::addTriggers(Elements& elements) const {
  elements.push_back(form::checkBox(preferences, preference::pellowOnMinimize,
                                    "Pellow a window whenever it is minimized"));
  elements.push_back(form::note("pellowOnMinimize", texts.pellowOnMinimizeNote));
  elements.push_back(form::checkBox(preferences, preference::restoreOnActivation,
                                    "Bring a window back when you switch to its app"));
  elements.push_back(form::note("restoreOnActivation", texts.restoreOnActivationNote));
}

void GeneralPane::addStrip(Elements& elements) const {
  elements.push_back(form::section("Strip"));
  elements.push_back(
      form::checkBox(preferences, preference::tabsOnAllScreens, "Show tabs on all displays"));
  elements.push_back(form::checkBox(preferences, preference::autoHideStrip, "Auto-hide tabs"));
  elements.push_back(
      form::note("autoHide",
                 "Slides a strip off the side until the pointer reaches it. Only applies to zones "
                 "snapped to a side: a floating zone has no edge to hide against, so it stays "
                 "where you put it."));
}

void GeneralPane::addProgram(Elements& elements) const {
  elements.push_back(form::section("Pellow"));
  elements.push_back({"openAtLogin", CheckBox{.title = "Open Pellow at login",
                                              .isOn = loginItem.isEnabled(),
                                              .onToggled = onSetLaunchAtLogin}});
  elements.push_back(
      form::checkBox(preferences, preference::syncSettings, std::string(texts.syncTitle)));
  elements.push_back(form::note("sync", std::string(texts.syncNote) + syncStatus));
}

void GeneralPane::addUpdates(Elements& elements) const {
  const auto checked = updates.sinceLastCheck();
  elements.push_back(form::section("Updates"));
  elements.push_back(form::button("checkNow", "Check Now", onCheckForUpdates));
  elements.push_back(form::label(
      "lastCheck", checked ? "Last checked " + relativeDate(*checked) : "Not checked yet."));
  elements.push_back({"automaticChecks", CheckBox{.title = "Check for updates automatically",
                                                  .isOn = updates.automaticallyChecks(),
                                                  .onToggled = onSetAutomaticallyChecks}});
  elements.push_back(form::note("updates", texts.updatesNote));
  elements.push_back(
      form::label("version", "You have version " + updates.currentVersion().value_or("?")));
}

}  // namespace pellow
