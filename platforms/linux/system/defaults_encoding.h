#pragma once

#include <nlohmann/json.hpp>
#include <optional>

#include "platform/user_defaults.h"

namespace pellow {

// How values stand in the defaults file: booleans, numbers and texts as themselves, whole numbers
// without a fraction; data as {"data": "text"} when it is UTF-8, else as {"base64": "…"}.
nlohmann::ordered_json encodeDefaultsValue(const DefaultsValue& value);

// Nothing for what is none of these.
std::optional<DefaultsValue> decodeDefaultsValue(const nlohmann::ordered_json& json);

}  // namespace pellow
