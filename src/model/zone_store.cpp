#include "model/zone_store.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/json.h"

namespace pellow {
namespace {

constexpr std::string_view zonesKey = "zones";
constexpr std::string_view defaultZoneKey = "defaultZoneID";
constexpr std::string_view pinsKey = "pinnedApps";

template <class T>
std::optional<T> read(const UserDefaults& defaults, std::string_view key) {
  const auto bytes = data(defaults, key);
  return bytes ? decodeJSON<T>(*bytes) : std::nullopt;
}

// What cannot be encoded leaves the stored value as it is.
void write(UserDefaults& defaults, std::string_view key, const nlohmann::json& json) {
  if (auto encoded = encodeJSON(json)) defaults.set(key, DefaultsData{std::move(*encoded)});
}

// The one strip of an earlier version.
TabZone migratedZone(StripEdge edge, UUID id) {
  return {.id = id,
          .name = "Tabs",
          .position = {edge == StripEdge::right ? 1.0 : 0.0, 0.5},
          .snap = edge};
}

// Each new zone stands lower than the last, so that strips do not overlap.
ZonePosition staggered(std::size_t zonesBefore) {
  return {1.0, std::min(0.15 + 0.2 * static_cast<double>(zonesBefore), 0.9)};
}

}  // namespace

ZoneStore::ZoneStore(UserDefaults& defaults, const Preferences& preferences,
                     NotificationCenter& notifications, UUIDSource& uuids)
    : defaults_(defaults), notifications_(notifications), uuids_(uuids) {
  loadZones(preferences);
  pins = read<Pins>(defaults_, pinsKey).value_or(Pins{});
}

void ZoneStore::loadZones(const Preferences& preferences) {
  if (auto stored = read<std::vector<TabZone>>(defaults_, zonesKey); stored && !stored->empty()) {
    zones_ = std::move(*stored);
    return;
  }
  isNew_ = true;
  zones_ = {migratedZone(preferences.value(preference::edge), uuids_.next())};
  persist();
}

void ZoneStore::savePins() { write(defaults_, pinsKey, pins); }

TabZone ZoneStore::defaultZone() const {
  const auto id = UUID::parse(text(defaults_, defaultZoneKey).value_or(""));
  const auto* const chosen = id ? find(*id) : nullptr;
  return chosen ? *chosen : zones_.front();
}

void ZoneStore::setDefaultZoneID(UUID id) {
  storeDefaultZoneID(id);
  post();
}

TabZone ZoneStore::zone(std::optional<UUID> id) const {
  const auto* const named = id ? find(*id) : nullptr;
  return named ? *named : defaultZone();
}

std::optional<TabZone> ZoneStore::pinnedZone(std::string_view bundleID) const {
  const auto pin = pins.find(bundleID);
  const auto* const pinned = pin == pins.end() ? nullptr : find(pin->second);
  return pinned ? std::optional(*pinned) : std::nullopt;
}

TabZone ZoneStore::add(std::string_view name) {
  const TabZone added{.id = uuids_.next(),
                      .name = uniqueName(name),
                      .position = staggered(zones_.size()),
                      .snap = StripEdge::right};
  zones_.push_back(added);
  persist();
  post();
  return added;
}

void ZoneStore::update(const TabZone& zone) {
  const auto found = std::ranges::find(zones_, zone.id, &TabZone::id);
  if (found == zones_.end()) return;
  *found = zone;
  persist();
  post();
}

std::optional<UUID> ZoneStore::remove(UUID id) {
  if (zones_.size() < 2 || !find(id)) return std::nullopt;
  const bool wasDefault = defaultZone().id == id;
  std::erase_if(zones_, [&](const TabZone& zone) { return zone.id == id; });
  if (wasDefault) storeDefaultZoneID(zones_.front().id);
  std::erase_if(pins, [&](const auto& pin) { return pin.second == id; });
  savePins();
  persist();
  post();
  return defaultZone().id;
}

void ZoneStore::applySynced(const std::vector<TabZone>& syncedZones, const Pins& syncedPins,
                            std::optional<UUID> defaultZoneID) {
  const bool zonesChanged = !syncedZones.empty() && syncedZones != zones_;
  if (zonesChanged) zones_ = syncedZones;
  if (syncedPins != pins) {
    pins = syncedPins;
    savePins();
  }
  if (defaultZoneID && find(*defaultZoneID)) storeDefaultZoneID(*defaultZoneID);
  if (!zonesChanged) return;
  persist();
  post();
}

void ZoneStore::persist() { write(defaults_, zonesKey, zones_); }

void ZoneStore::storeDefaultZoneID(UUID id) { defaults_.set(defaultZoneKey, id.text()); }

void ZoneStore::post() const { notifications_.post(didChange); }

const TabZone* ZoneStore::find(UUID id) const {
  const auto found = std::ranges::find(zones_, id, &TabZone::id);
  return found == zones_.end() ? nullptr : &*found;
}

std::string ZoneStore::uniqueName(std::string_view name) const {
  std::string candidate(name);
  for (int counter = 2; std::ranges::find(zones_, candidate, &TabZone::name) != zones_.end();
       ++counter)
    candidate = fmt::format("{} {}", name, counter);
  return candidate;
}

}  // namespace pellow
