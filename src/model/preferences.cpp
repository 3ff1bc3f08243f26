#include "model/preferences.h"

#include <algorithm>
#include <utility>

namespace pellow {
namespace {

template <class Visitor>
void forEach(Visitor visit) {
  std::apply([&](const auto&... each) { (visit(each), ...); }, preference::all);
}

template <class Visitor>
void forEachSynced(Visitor visit) {
  forEach([&](const auto& each) {
    if (each.sharing == Sharing::synced) visit(each);
  });
}

template <class T>
DefaultsValue registered(const Preference<T>& preference) {
  if constexpr (std::is_enum_v<T>)
    return std::string(rawValue(preference.registered));
  else
    return preference.registered;
}

}  // namespace

Preferences::Preferences(UserDefaults& defaults, NotificationCenter& notifications)
    : defaults_(defaults), notifications_(notifications) {
  std::map<std::string, DefaultsValue> values;
  forEach([&](const auto& each) { values.emplace(each.key, registered(each)); });
  defaults_.registerDefaults(std::move(values));
}

double Preferences::tabSize() const { return std::clamp(value(preference::tabSize), 20.0, 72.0); }

double Preferences::animationDuration() const {
  return std::clamp(value(preference::animationDuration), 0.1, 1.2);
}

double Preferences::previewSize() const {
  return std::clamp(value(preference::previewSize), 160.0, 640.0);
}

bool Preferences::pictureTabs() const {
  return value(preference::useThumbnails) && value(preference::thumbnailTabs);
}

Preferences::Values Preferences::exportForSync() const {
  Values values;
  forEachSynced([&](const auto& each) {
    if (auto value = defaults_.value(each.key)) values.emplace(each.key, std::move(*value));
  });
  return values;
}

void Preferences::applySynced(const Values& values) {
  bool written = false;
  forEachSynced([&](const auto& each) {
    const auto incoming = values.find(each.key);
    if (incoming == values.end()) return;
    write(each.key, incoming->second);
    written = true;
  });
  if (written) post();
}

// Kept eventually; the defaults themselves report what cannot be kept.
void Preferences::write(std::string_view key, DefaultsValue value) {
  (void)defaults_.set(key, std::move(value));
}

void Preferences::post() const { notifications_.post(didChange); }

}  // namespace pellow
