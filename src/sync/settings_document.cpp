#include "sync/settings_document.h"

#include <cmath>
#include <cstdint>
#include <variant>

#include "base/json.h"

namespace pellow {
namespace {

nlohmann::json tagged(const char* kind, nlohmann::json value) {
  return {{kind, {{"_0", std::move(value)}}}};
}

// Whole numbers without a point.
nlohmann::json numberJSON(double number) {
  constexpr double exact = 1LL << 53;
  if (std::trunc(number) == number && std::abs(number) < exact)
    return static_cast<std::int64_t>(number);
  return number;
}

// Null for what the file cannot hold.
nlohmann::json valueJSON(const DefaultsValue& value) {
  if (const auto* const truth = std::get_if<bool>(&value)) return tagged("bool", *truth);
  if (const auto* const text = std::get_if<std::string>(&value)) return tagged("text", *text);
  const auto* const number = std::get_if<double>(&value);
  return number && std::isfinite(*number) ? tagged("number", numberJSON(*number)) : nullptr;
}

DefaultsValue readValue(const nlohmann::json& json) {
  if (!json.is_object() || json.size() != 1)
    throw JSONError("Invalid number of keys found, expected one.");
  const auto& kind = json.begin().key();
  const auto& value = json.begin().value().at("_0");
  if (kind == "bool") return value.get_ref<const bool&>();
  if (kind == "text") return value.get_ref<const std::string&>();
  if (kind == "number" && value.is_number()) return value.get<double>();
  throw JSONError("no value");
}

}  // namespace

void from_json(const nlohmann::json& json, SettingsDocument& document) {
  document.defaultZoneID = readOptional<UUID>(json, "defaultZoneID");
  document.pins = readMember<ZoneStore::Pins>(json, "pins");
  for (const auto& [key, value] : json.at("preferences").get_ref<const nlohmann::json::object_t&>())
    document.preferences.emplace(key, readValue(value));
  document.shortcuts = readMember<ShortcutStore::Overrides>(json, "shortcuts");
  document.zones = readMember<std::vector<TabZone>>(json, "zones");
}

std::optional<std::string> SettingsDocument::encoded() const {
  nlohmann::json json{{"pins", pins},
                      {"preferences", nlohmann::json::object()},
                      {"shortcuts", shortcuts},
                      {"zones", zones}};
  if (defaultZoneID) json["defaultZoneID"] = *defaultZoneID;
  for (const auto& [key, value] : preferences)
    if (auto written = valueJSON(value); !written.is_null())
      json["preferences"][key] = std::move(written);
  return encodeJSON(json, JSONLayout::pretty);
}

std::optional<SettingsDocument> SettingsDocument::decoded(std::string_view bytes) {
  return decodeJSON<SettingsDocument>(bytes);
}

}  // namespace pellow
