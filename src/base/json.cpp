#include "base/json.h"

namespace pellow {
namespace {

// The library writes an infinity as null, which could not be read back.
bool isSayable(const nlohmann::json& json) {
  if (json.is_number_float()) return std::isfinite(json.get<double>());
  if (!json.is_structured()) return true;
  for (const auto& member : json)
    if (!isSayable(member)) return false;
  return true;
}

}  // namespace

void to_json(nlohmann::json& json, const UUID& uuid) { json = uuid.text(); }

void from_json(const nlohmann::json& json, UUID& uuid) {
  const auto parsed = UUID::parse(json.get_ref<const std::string&>());
  if (!parsed) throw JSONError("no UUID");
  uuid = *parsed;
}

std::optional<std::string> encodeJSON(const nlohmann::json& json, JSONLayout layout) {
  if (!isSayable(json)) return std::nullopt;
  try {
    return json.dump(layout == JSONLayout::pretty ? 2 : -1);
  } catch (const nlohmann::json::exception&) {
    return std::nullopt;
  }
}

}  // namespace pellow
