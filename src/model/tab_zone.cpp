#include "model/tab_zone.h"

#include "base/json.h"

namespace pellow {
namespace {

ZonePosition readPosition(const nlohmann::json& json) {
  if (!json.is_array() || json.size() < 2) throw JSONError("no point");
  return {readJSON<double>(json[0]), readJSON<double>(json[1])};
}

StripEdge readEdge(const std::string& text) {
  const auto edge = fromRawValue<StripEdge>(text);
  if (!edge) throw JSONError("no edge");
  return *edge;
}

// A text of the earlier layout, which was read leniently.
std::string lenientText(const nlohmann::json& json, const char* key) {
  const auto found = json.find(key);
  return found != json.end() && found->is_string() ? found->get<std::string>() : std::string();
}

void readEarlierLayout(const nlohmann::json& json, TabZone& zone) {
  const auto edge = fromRawValue<StripEdge>(lenientText(json, "edge")).value_or(StripEdge::right);
  const auto alignment = lenientText(json, "alignment");
  zone.snap = edge;
  zone.position.x = edge == StripEdge::right ? 1.0 : 0.0;
  zone.position.y = alignment == "top" ? 0.0 : alignment == "bottom" ? 1.0 : 0.5;
}

void readPlacement(const nlohmann::json& json, TabZone& zone) {
  const auto position = json.find("position");
  if (position == json.end() || position->is_null()) return readEarlierLayout(json, zone);
  zone.position = readPosition(*position);
  if (const auto snap = readOptional<std::string>(json, "snap")) zone.snap = readEdge(*snap);
}

}  // namespace

void to_json(nlohmann::json& json, const TabZone& zone) {
  json = {{"id", zone.id},
          {"name", zone.name},
          {"position", {zone.position.x, zone.position.y}},
          {"showsName", zone.showsName}};
  if (zone.snap) json["snap"] = rawValue(*zone.snap);
  if (zone.colorHex) json["colorHex"] = *zone.colorHex;
  if (zone.tabSize) json["tabSize"] = *zone.tabSize;
  if (zone.displayID) json["displayID"] = *zone.displayID;
}

void from_json(const nlohmann::json& json, TabZone& zone) {
  zone = {.id = readMember<UUID>(json, "id"), .name = readMember<std::string>(json, "name")};
  zone.showsName = readOptional<bool>(json, "showsName").value_or(false);
  zone.colorHex = readOptional<std::string>(json, "colorHex");
  zone.tabSize = readOptional<double>(json, "tabSize");
  zone.displayID = readOptional<DisplayID>(json, "displayID");
  readPlacement(json, zone);
}

}  // namespace pellow
