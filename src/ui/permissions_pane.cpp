#include "ui/permissions_pane.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ui/form_builders.h"
#include "ui/privacy_settings.h"

namespace pellow {
namespace {

struct Permission {
  std::string title;
  std::string_view explanation;
  bool isGranted;
  std::string_view settings;  // where it is granted
};

void add(std::vector<FormElement>& elements, const Permission& permission, const Texts& texts,
         Workspace& workspace) {
  const auto& [title, explanation, isGranted, settings] = permission;
  FormRow row;
  row.elements.push_back(
      {title + "-status",
       isGranted ? FormStatus{"checkmark.circle.fill", "Granted", FormStatus::Tint::good}
                 : FormStatus{"exclamationmark.triangle.fill", "Not granted",
                              FormStatus::Tint::warning}});
  if (!isGranted) {
    auto button = form::button(title + "-open", std::string(texts.openSystemSettings),
                               [&workspace, settings] { workspace.open(settings); });
    button.accessibleName = title + ": " + std::string(texts.openSystemSettings);
    row.elements.push_back(std::move(button));
  }
  elements.push_back(form::section(title));
  elements.push_back(form::note(title, explanation));
  elements.push_back({title + "-row", std::move(row)});
}

}  // namespace

FormPane PermissionsPane::form() const {
  FormPane pane{"Permissions", {}};
  auto& elements = pane.elements;
  add(elements,
      {"Accessibility", "Required. Pellow cannot see or move other apps' windows without it.",
       accessibility.isProcessTrusted(), PrivacySettings::accessibility},
      texts, workspace);
  add(elements,
      {"Screen Recording", texts.screenRecordingExplained, screenCapture.preflightAccess(),
       PrivacySettings::screenRecording},
      texts, workspace);
  elements.push_back(form::section("Options"));
  elements.push_back(
      {std::string(preference::useThumbnails.key),
       CheckBox{.title = "Use real window images",
                .isOn = preferences.value(preference::useThumbnails),
                .onToggled = [&preferences = preferences, &screenCapture = screenCapture](bool on) {
                  if (on && !screenCapture.preflightAccess()) screenCapture.requestAccess();
                  preferences.set(preference::useThumbnails, on);
                }}});
  elements.push_back(form::note(
      "relaunch", "A Screen Recording grant is often not picked up until Pellow restarts."));
  elements.push_back(form::button("relaunch", "Relaunch Pellow", onRelaunch));
  return pane;
}

}  // namespace pellow
