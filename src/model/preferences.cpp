#include "model/preferences.h"

#include <algorithm>
#include <utility>

namespace pellow {
namespace {

std::map<std::string, DefaultsValue> registeredDefaults() {
  using namespace preference;
  std::map<std::string, DefaultsValue> values;
  const auto set = [&](std::string_view key, DefaultsValue value) {
    values.emplace(key, std::move(value));
  };
  set(mechanism, std::string(rawValue(Mechanism::offscreen)));
  set(tabScope, std::string(rawValue(TabScope::window)));
  set(edge, "right");
  set(showTitles, false);
  set(tabsOnAllScreens, false);
  set(useThumbnails, false);
  set(thumbnailTabs, true);
  set(animateFlight, true);
  set(animationDuration, 0.32);
  set(tabSize, 34.0);
  set(autoHideStrip, false);
  set(restoreOnActivation, true);
  set(pellowOnMinimize, true);
  set(floatAboveWindows, true);
  set(previewOnHover, true);
  set(previewSize, 320.0);
  set(syncSettings, true);
  return values;
}

}  // namespace

Preferences::Preferences(UserDefaults& defaults, NotificationCenter& notifications)
    : defaults_(defaults), notifications_(notifications) {
  defaults_.registerDefaults(registeredDefaults());
}

Mechanism Preferences::mechanism() const {
  const auto stored = text(defaults_, preference::mechanism).value_or("");
  return fromRawValue<Mechanism>(stored).value_or(Mechanism::minimize);
}

void Preferences::setMechanism(Mechanism mechanism) {
  defaults_.set(preference::mechanism, std::string(rawValue(mechanism)));
  post();
}

TabScope Preferences::tabScope() const {
  const auto stored = text(defaults_, preference::tabScope).value_or("");
  return fromRawValue<TabScope>(stored).value_or(TabScope::window);
}

void Preferences::setTabScope(TabScope scope) {
  defaults_.set(preference::tabScope, std::string(rawValue(scope)));
  post();
}

double Preferences::tabSize() const {
  return std::clamp(number(defaults_, preference::tabSize), 20.0, 72.0);
}

bool Preferences::pictureTabs() const {
  return boolean(defaults_, preference::useThumbnails) &&
         boolean(defaults_, preference::thumbnailTabs);
}

Preferences::Values Preferences::exportForSync() const {
  Values values;
  for (const auto key : syncableKeys)
    if (auto value = defaults_.value(key)) values.emplace(key, std::move(*value));
  return values;
}

void Preferences::applySynced(const Values& values) {
  bool written = false;
  for (const auto key : syncableKeys) {
    const auto incoming = values.find(key);
    if (incoming == values.end()) continue;
    defaults_.set(key, incoming->second);
    written = true;
  }
  if (written) post();
}

void Preferences::post() const { notifications_.post(didChange); }

}  // namespace pellow
